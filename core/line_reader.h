// A text file line by line, without an allocation.
#pragma once

#include <cstddef>

#include "core/owner.h"

namespace devfacts {

class line_reader {
 public:
  // A file that cannot be opened has no lines. A line longer than the maximum, 4095 or less, comes in pieces, each of
  // them a line.
  line_reader(const char *path, size_t max_line);

  // The next line without its newline, to change at will until the next call. Null at the end and after a failed read,
  // which takes the line that it was to end with it.
  char *next();

 private:
  static constexpr size_t capacity = 4096;

  [[gnu::cold]] bool read_on();

  unique_fd file_;
  size_t max_line_;
  char *next_ = buffer_;
  char *end_ = buffer_;
  char held_ = '\0';  // the byte that the NUL of a piece replaces
  bool is_last_ = false;
  char buffer_[capacity + 1];
};

}  // namespace devfacts
