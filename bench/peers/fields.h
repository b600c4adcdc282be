// What the documents of the peers have in common with ours.
#pragma once

#include <devfacts/net.h>
#include <net/if.h>
#include <sys/socket.h>

#include "net/counter_names.h"

namespace bench {

inline const char *status_of(const ifi_entry *entry) { return (entry->flags & IFF_UP) != 0 ? "up" : "down"; }

inline const char *element_of(const ipi_entry *address) { return address->family == AF_INET ? "ipv4" : "ipv6"; }

// Hands every text item of an interface to put(name, text), and every counter to count(name, number).
template <class Put, class Count>
void for_each_item(const ifi_entry *entry, Put put, Count count) {
  char text[512];
  put("name", entry->name);
  put("status", status_of(entry));
  const char *master = entry->master != 0 ? if_indextoname(static_cast<unsigned>(entry->master), text) : nullptr;
  if (master != nullptr) put("master", master);
  put("hwaddr", ifi_mac_ntop(text, sizeof text, entry->hwaddr));
  for (const list_link *link = entry->addrs.next; link != &entry->addrs; link = link->next) {
    const auto *address = reinterpret_cast<const ipi_entry *>(link);
    put(element_of(address), ifi_ip_ntop(text, sizeof text, address));
  }
  const auto *counter = reinterpret_cast<const uint32_t *>(entry->stats);
  for (const char *name = devfacts::counter_names; *name != '\0'; name = devfacts::next_name(name))
    count(name, *counter++);
}

}  // namespace bench
