// Where the image lives: a flash partition, or else a file.
#pragma once

#include <sys/types.h>

#include "core/owner.h"

namespace devfacts {

// The store, for reading and writing; empty where there is none.
unique_fd open_store();

// Can a mapping of these bytes of the store be read and written? Behind its end, in a part that cannot be read, or
// where a file system has no room left, a mapping would end the process. Makes sure of the room that a file has only
// promised.
bool has_room(int fd, off_t offset, off_t count);

}  // namespace devfacts
