#include <devfacts/core.h>

#include <cerrno>
#include <cstdlib>

namespace {

constexpr int groups = 6;

bool ends_group(char c) { return c == ':' || c == '\0'; }

// The value of a hexadecimal digit; no other character has one below 16.
unsigned digit_of(char c) {
  const unsigned decimal = static_cast<unsigned char>(c) - unsigned{'0'};
  if (decimal < 10) return decimal;
  const unsigned letter = (static_cast<unsigned char>(c) | 0x20U) - unsigned{'a'};
  return letter < 6 ? letter + 10 : 16;
}

// One or two digits, the usual group.
const char *parse_digits(const char *text, uint8_t &byte) {
  unsigned number = digit_of(*text);
  if (number >= 16) return nullptr;
  if (!ends_group(*++text)) {
    const unsigned digit = digit_of(*text++);
    if (digit >= 16) return nullptr;
    number = number * 16 + digit;
  }
  if (!ends_group(*text)) return nullptr;
  byte = static_cast<uint8_t>(number);
  return text;
}

// Any group that strtoul reads. Returns a pointer to the ":" or the end of the text after it; null if there is neither.
const char *parse_group(const char *text, uint8_t &byte) {
  if (const char *end = parse_digits(text, byte)) return end;
  char *end = nullptr;
  errno = 0;
  const unsigned long number = std::strtoul(text, &end, 16);
  if (errno == ERANGE || (errno != 0 && number == 0)) return nullptr;
  if (end == text || (*end != ':' && *end != '\0') || number > UINT8_MAX) return nullptr;
  byte = static_cast<uint8_t>(number);
  return end;
}

}  // namespace

int parse_macaddr(uint8_t *addr, const char *text) {
  for (int group = 0; group < groups; ++group) {
    const char *end = parse_group(text, addr[group]);
    if (end == nullptr || (*end == '\0' && group < groups - 1)) return -1;
    text = end + 1;
  }
  return 0;
}
