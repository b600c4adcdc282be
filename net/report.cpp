// The netstats report.
#include <devfacts/net.h>
#include <net/if.h>
#include <sys/socket.h>

#include <cstring>

#include "core/print_buffer.h"
#include "net/counter_names.h"
#include "net/list.h"

using namespace devfacts;

namespace {

constexpr size_t scratch_size = 512;

// The element of an address; null if its family has no element.
const char *address_element(const ipi_entry *address) {
  switch (address->family) {
    case AF_INET: return "ipv4";
    case AF_INET6: return "ipv6";
    default: return nullptr;
  }
}

void print_text(print_buffer &out, const char *name, const char *value) {
  if (value != nullptr) out.item(name, value);
}

void print_addresses(print_buffer &out, const ifi_entry *entry, char *scratch) {
  for (list_link *link = entry->addrs.next; link != &entry->addrs; link = link->next) {
    const ipi_entry *address = to_address(link);
    const char *element = address_element(address);
    if (element != nullptr) print_text(out, element, ifi_ip_ntop(scratch, scratch_size, address));
  }
}

void print_counters(print_buffer &out, const rtnl_link_stats *stats) {
  const auto *counter = reinterpret_cast<const uint32_t *>(stats);
  for (const char *name = counter_names; *name != '\0'; name = next_name(name)) out.item(name, *counter++);
}

void print_detail(print_buffer &out, const ifi_entry *entry) {
  char scratch[scratch_size];
  print_text(out, "name", entry->name);
  out.item("status", (entry->flags & IFF_UP) != 0 ? "up" : "down");
  if (entry->master != 0) {
    print_text(out, "master", if_indextoname(static_cast<unsigned>(entry->master), scratch));
  }
  out.item("hwaddr", ifi_mac_ntop(scratch, scratch_size, entry->hwaddr));
  print_addresses(out, entry, scratch);
  if (entry->stats != nullptr) print_counters(out, entry->stats);
}

}  // namespace

void ifi_xml_str_item(const char *name, const char *value) {
  if (name != nullptr && value != nullptr) print_item(name, value);
}

void ifi_xml_int_item(const char *name, uint32_t value) { print_item(name, value); }

void ifi_dump_detail(const ifi_entry *entry) {
  print_buffer out;
  print_detail(out, entry);
}

void ifi_dump_all(const char *filter) {
  print_buffer out;
  out.line("<netstats>\n");
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    const ifi_entry *entry = to_interface(link);
    if (filter != nullptr && (entry->name == nullptr || std::strcmp(entry->name, filter) != 0)) continue;
    out.line(" <interface>\n");
    print_detail(out, entry);
    out.line(" </interface>\n");
  }
  out.line("</netstats>\n");
}
