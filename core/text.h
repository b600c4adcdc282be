// White space as the C locale knows it, whatever locale the program has set.
#pragma once

namespace devfacts {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Makes NUL of the white space at the end of a text whose end is known.
inline void cut_space(const char *begin, char *end) {
  while (end != begin && is_space(end[-1])) *--end = '\0';
}

}  // namespace devfacts
