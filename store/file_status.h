// What the file system says about an open file.
#pragma once

#include <cstdint>

namespace devfacts {

struct file_status {
  uint32_t mode;
  uint64_t size;
  uint64_t blocks;  // of 512 bytes
};

// All zero if the file system refuses.
file_status stat_file(int fd);

}  // namespace devfacts
