// Paths of an interface's files under /proc.
#pragma once

#include <cstddef>
#include <cstdio>

namespace devfacts {

// Formats a path with the name. False if it does not fit: a cut path could be another file's.
template <size_t Size>
bool format_path(char (&path)[Size], const char *format, const char *name) {
  const int length = std::snprintf(path, Size, format, name);
  return length >= 0 && static_cast<size_t>(length) < Size;
}

}  // namespace devfacts
