// Texts that come from strangers, as UTF-8: what of them goes to a terminal or into a document.
#pragma once

#include <devfacts/core.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace devfacts::tool {

// One character of a text and the bytes that it takes.
struct character {
  static constexpr uint32_t invalid = UINT32_MAX;

  uint32_t code;  // invalid for a byte that is no part of UTF-8
  uint32_t size;

  bool is_control() const { return code < 0x20 || (code >= 0x7f && code < 0xa0); }
};

// The character at the start of a text that is not empty.
character first_character(std::string_view text);

// The first bytes of a text, and what follows them. std::string_view::substr() would need the C++ runtime, for its
// exception.
inline std::string_view leading(std::string_view text, size_t size) {
  return {text.data(), std::min(size, text.size())};
}
inline std::string_view after(std::string_view text, size_t size) {
  text.remove_prefix(std::min(size, text.size()));
  return text;
}

// Takes the first character off the text.
inline character take_character(std::string_view &text) {
  const character first = first_character(text);
  text.remove_prefix(first.size);
  return first;
}

// Plain is for people. Quoted has \x5c for a backslash as well, so that no two texts look alike and "printf %b" returns
// the bytes. A label is quoted as the text form of Prometheus has it.
enum class quoting : uint8_t { plain, quoted, label };

// Prints a text with \xNN for each byte of a control character or of no character.
void print_visible(FILE *out, std::string_view text, quoting how = quoting::plain);

// The columns that print_visible() takes.
size_t visible_width(std::string_view text);

// Prints a value alone on its line: to a terminal as print_visible() does, elsewhere unchanged.
void print_value(const char *value);

// Prints an error as "devfacts: ...", one line on standard error.
DEVFACTS_PRINTF(1, 2) void print_error(const char *format, ...);

}  // namespace devfacts::tool
