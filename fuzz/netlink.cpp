// The kernel's messages: whatever they say, the list that they make is sound and can be printed.
#include <devfacts/net.h>

#include <cstring>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  fuzz::run(fuzz::view(bytes, count), [] { ifi_get_all_ip(); });
  for (const list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    const auto *entry = reinterpret_cast<const ifi_entry *>(link);
    fuzz::require(link->next->prev == link && ifi_find_by_index(entry->index) != nullptr);
    fuzz::require(entry->name == nullptr || std::strlen(entry->name) < UINT16_MAX);
  }
  ifi_dump_all(nullptr);
  ifi_free_all();
  fuzz::require(interfaces.next == &interfaces);
  return 0;
}
