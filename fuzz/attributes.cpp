// Attributes at the end of their buffer: a table's entries and their payloads are within it.
#include <devfacts/net.h>

#include <memory>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  constexpr int max = 8;
  const std::unique_ptr<char, decltype(&std::free)> room(static_cast<char *>(std::malloc(count + 1)), std::free);
  fuzz::view(bytes, count).copy(room.get(), count);
  rtattr *table[max + 1] = {};
  nl_parse_rtattr(table, max, reinterpret_cast<rtattr *>(room.get()), static_cast<int>(count));
  for (const rtattr *each : table) {
    if (each == nullptr) continue;
    const auto *data = static_cast<const char *>(nla_data(each));
    fuzz::require(data >= room.get() + sizeof *each && data + each->rta_len <= room.get() + count + sizeof *each);
    std::free(nla_memdup(each));
  }
  return 0;
}
