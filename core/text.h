// White space of the C locale, whatever locale the program has set.
#pragma once

namespace devfacts {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Replaces the white space at the end of a text by NUL bytes.
inline void cut_space(const char *begin, char *end) {
  while (end != begin && is_space(end[-1])) *--end = '\0';
}

}  // namespace devfacts
