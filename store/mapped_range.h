// Whether a part of the store, in its first 4 GiB, can be mapped and written: a fault in a mapping ends the process.
#pragma once

#include <cstdint>

namespace devfacts {

// Makes sure that the file system has blocks for these bytes. False beyond the end of the file, or if the file system
// is full.
bool reserve_range(int fd, uint32_t offset, uint32_t count);

// Reads the bytes as a mapping does, by whole pages.
bool is_readable(int fd, uint32_t offset, uint32_t count);

}  // namespace devfacts
