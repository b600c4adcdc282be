// White space of the C locale, whatever locale the program has set.
#pragma once

namespace devfacts {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool starts_with(const char *text, const char *start) {
  for (; *start != '\0'; ++start, ++text) {
    if (*text != *start) return false;
  }
  return true;
}

template <class Char>
Char *skip_space(Char *text) {
  while (is_space(*text)) ++text;
  return text;
}

// Replaces the white space at the end of a text by NUL bytes.
inline void cut_space(const char *begin, char *end) {
  while (end != begin && is_space(end[-1])) *--end = '\0';
}

}  // namespace devfacts
