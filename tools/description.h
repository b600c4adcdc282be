// Looks a product description through for what the library would not tell.
#pragma once

#include "command.h"

namespace devfacts::tool {

// Prints what is wrong with the file, a line each; failed if there is anything.
exit_status check_description(const char *path);

// The number of the first line that is neither an entry, nor a comment, nor blank; 0 if there is no such line.
unsigned malformed_line(const char *path);

}  // namespace devfacts::tool
