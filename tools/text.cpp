#include "text.h"

#include <unistd.h>

#include <cstdarg>

namespace devfacts::tool {
namespace {

// The bytes of a character by its first byte, the bits of that which count, and the smallest code of that size.
constexpr struct {
  unsigned char mask, start, bits;
  uint32_t min_code;
} forms[] = {{0x80, 0x00, 0x7f, 0}, {0xe0, 0xc0, 0x1f, 0x80}, {0xf0, 0xe0, 0x0f, 0x800}, {0xf8, 0xf0, 0x07, 0x10000}};

constexpr uint32_t max_code = 0x10ffff;

bool is_surrogate(uint32_t code) { return code >= 0xd800 && code < 0xe000; }

// The character of that many bytes; its code is invalid if the bytes are not one.
character decode(std::string_view text, uint32_t size) {
  const auto &form = forms[size - 1];
  uint32_t code = static_cast<unsigned char>(text[0]) & form.bits;
  for (const char each : after(leading(text, size), 1)) {
    const auto byte = static_cast<unsigned char>(each);
    if ((byte & 0xc0) != 0x80) return {character::invalid, 1};
    code = code << 6 | (byte & 0x3f);
  }
  if (code < form.min_code || code > max_code || is_surrogate(code)) return {character::invalid, 1};
  return {code, size};
}

bool is_escaped(const character &each, quoting how) {
  return each.code == character::invalid || each.is_control() || (how != quoting::plain && each.code == '\\');
}

}  // namespace

character first_character(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  uint32_t size = 0;
  for (const auto &form : forms) {
    ++size;
    if ((first & form.mask) == form.start && size <= text.size()) return decode(text, size);
  }
  return {character::invalid, 1};
}

void print_visible(FILE *out, std::string_view text, quoting how) {
  while (!text.empty()) {
    const std::string_view rest = text;
    const character each = take_character(text);
    if (is_escaped(each, how)) {
      const char *format = how == quoting::label ? "\\\\x%02x" : "\\x%02x";
      for (const char byte : leading(rest, each.size)) std::fprintf(out, format, static_cast<unsigned char>(byte));
    } else {
      if (how == quoting::label && each.code == '"') std::fputc('\\', out);
      std::fwrite(rest.data(), 1, each.size, out);
    }
  }
}

size_t visible_width(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const character each = take_character(text);
    width += is_escaped(each, quoting::plain) ? 4 * each.size : 1;
  }
  return width;
}

void print_value(const char *value) {
  if (isatty(STDOUT_FILENO) == 0) {
    std::puts(value);
    return;
  }
  print_visible(stdout, value);
  std::putchar('\n');
}

void print_error(const char *format, ...) {
  char text[1024];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  std::fputs("devfacts: ", stderr);
  print_visible(stderr, text);
  std::fputc('\n', stderr);
}

}  // namespace devfacts::tool
