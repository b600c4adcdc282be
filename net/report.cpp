// The netstats report.
#include <arpa/inet.h>
#include <devfacts/net.h>
#include <net/if.h>

#include <cstdio>
#include <cstring>

#include "net/list.h"

using namespace devfacts;

namespace {

constexpr size_t scratch_size = 512;

// Texts in place, not pointers to them, which would cost a relocation each.
constexpr char counter_names[][20] = {
    "rx_packets",       "tx_packets",        "rx_bytes",          "tx_bytes",        "rx_errors",
    "tx_errors",        "rx_dropped",        "tx_dropped",        "multicast",       "collisions",
    "rx_length_errors", "rx_over_errors",    "rx_crc_errors",     "rx_frame_errors", "rx_fifo_errors",
    "rx_missed_errors", "tx_aborted_errors", "tx_carrier_errors", "tx_fifo_errors",  "tx_heartbeat_errors",
    "tx_window_errors", "rx_compressed",     "tx_compressed",
};
static_assert(sizeof counter_names / sizeof *counter_names == 23);

// The element of an address; null if its family has no element.
const char *address_element(const ipi_entry *address) {
  switch (address->family) {
    case AF_INET: return "ipv4";
    case AF_INET6: return "ipv6";
    default: return nullptr;
  }
}

void print_addresses(const ifi_entry *entry, char *scratch) {
  for (list_link *link = entry->addrs.next; link != &entry->addrs; link = link->next) {
    const ipi_entry *address = to_address(link);
    const char *element = address_element(address);
    if (element != nullptr) ifi_xml_str_item(element, ifi_ip_ntop(scratch, scratch_size, address));
  }
}

void print_counters(const rtnl_link_stats *stats) {
  const auto *counter = reinterpret_cast<const uint32_t *>(stats);
  for (const char *name : counter_names) ifi_xml_int_item(name, *counter++);
}

}  // namespace

void ifi_xml_str_item(const char *name, const char *value) {
  if (name != nullptr && value != nullptr) std::printf("  <%s>%s</%s>\n", name, value, name);
}

void ifi_xml_int_item(const char *name, uint32_t value) { std::printf("  <%s>%u</%s>\n", name, value, name); }

char *ifi_mac_ntop(char *dst, size_t size, const uint8_t *mac) {
  std::snprintf(dst, size, "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
  return dst;
}

char *ifi_ip_ntop(char *buf, size_t size, const ipi_entry *entry) {
  if (entry == nullptr || entry->addr == nullptr) return nullptr;
  inet_ntop(entry->family, entry->addr, buf, static_cast<socklen_t>(size));
  return buf;
}

void ifi_dump_detail(const ifi_entry *entry) {
  char scratch[scratch_size];
  ifi_xml_str_item("name", entry->name);
  ifi_xml_str_item("status", (entry->flags & IFF_UP) != 0 ? "up" : "down");
  if (entry->master != 0) {
    ifi_xml_str_item("master", if_indextoname(static_cast<unsigned>(entry->master), scratch));
  }
  ifi_xml_str_item("hwaddr", ifi_mac_ntop(scratch, scratch_size, entry->hwaddr));
  print_addresses(entry, scratch);
  if (entry->stats != nullptr) print_counters(entry->stats);
}

void ifi_dump_all(const char *filter) {
  std::puts("<netstats>");
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    const ifi_entry *entry = to_interface(link);
    if (filter != nullptr && (entry->name == nullptr || std::strcmp(entry->name, filter) != 0)) continue;
    std::puts(" <interface>");
    ifi_dump_detail(entry);
    std::puts(" </interface>");
  }
  std::puts("</netstats>");
}
