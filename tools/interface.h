// Names of interfaces, as arguments and as values of a description.
#pragma once

#include "command.h"

namespace devfacts::tool {

// Can this be an interface's name? Nothing else becomes part of a path or of a request.
bool is_interface_name(const char *name);

// Says that there is no such interface; or, if there is one, what it lacks.
exit_status refuse_interface(const char *name, const char *lack = "is gone");

}  // namespace devfacts::tool
