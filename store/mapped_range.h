// Whether a part of the store can be mapped and written: a fault in a mapping ends the process.
#pragma once

#include <sys/types.h>

namespace devfacts {

// Makes sure that the file system has blocks for these bytes. False beyond the end of the file, or if the file system
// is full.
bool reserve_range(int fd, off_t offset, off_t count);

// Reads the bytes as a mapping does, by whole pages.
bool is_readable(int fd, off_t offset, off_t count);

}  // namespace devfacts
