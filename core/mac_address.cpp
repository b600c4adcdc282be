#include <devfacts/core.h>

#include <cerrno>
#include <cstdlib>

namespace {

constexpr int groups = 6;

// Reads one group. Returns a pointer to the ":" or the end of the text after it; null if there is neither.
const char *parse_group(const char *text, uint8_t &byte) {
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
