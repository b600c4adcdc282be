#include "core/print_buffer.h"

#include <cstdio>

using namespace devfacts;

namespace {

// Writes the digits in front of the end, and returns the place of the first. The quotient is a product, as a division
// takes the device many cycles.
char *digits_before(char *end, uint32_t number) {
  do {
    const auto tenth = static_cast<uint32_t>(static_cast<uint64_t>(number) * 0xCCCCCCCDULL >> 35);
    *--end = static_cast<char>('0' + (number - tenth * 10));
    number = tenth;
  } while (number != 0);
  return end;
}

// Texts are short: the C library's functions would take longer to begin than this does in all.
char *copy(char *to, const char *stop, const char *from) {
  while (to < stop) {
    const char byte = *from++;
    if (byte == '\0') break;
    *to++ = byte;
  }
  return to;
}

}  // namespace

bool print_buffer::append(const char *name, const char *value) {
  if (name == nullptr) return false;  // printf says what the C library says of it
  const char *stop = text_ + capacity;
  char *to = text_ + size_;
  *to++ = ' ';
  *to++ = ' ';
  *to++ = '<';
  to = copy(to, stop, name);
  *to++ = '>';
  to = copy(to, stop, value);
  *to++ = '<';
  *to++ = '/';
  to = copy(to, stop, name);
  *to++ = '>';
  *to++ = '\n';
  if (to > stop) return false;
  size_ = static_cast<size_t>(to - text_);
  return true;
}

void print_buffer::flush_and_append(const char *name, const char *value) {
  flush();
  if (!append(name, value)) std::printf("  <%s>%s</%s>\n", name, value, name);
}

void print_buffer::item(const char *name, uint32_t magnitude, bool is_negative) {
  constexpr size_t max_digits = 11;  // and a sign
  char digits[max_digits + 1];
  char *end = digits + max_digits;
  *end = '\0';
  char *text = digits_before(end, magnitude);
  if (is_negative) *--text = '-';
  item(name, text);
}

void print_buffer::line(const char *text) {
  if (size_ + max_line > capacity) flush();
  size_ = static_cast<size_t>(copy(text_ + size_, text_ + capacity, text) - text_);
}

void print_buffer::flush() {
  if (size_ != 0) std::fwrite(text_, 1, size_, stdout);
  size_ = 0;
}

void devfacts::print_item(const char *name, const char *value) { print_buffer().item(name, value); }

void devfacts::print_item(const char *name, uint32_t magnitude, bool is_negative) {
  print_buffer().item(name, magnitude, is_negative);
}
