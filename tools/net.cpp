// The interfaces as the document that ifi_dump_all() prints, but well-formed whatever their names are.
#include "net.h"

#include <arpa/inet.h>
#include <net/if.h>

#include <cstdio>
#include <cstring>

#include "interface.h"
#include "status.h"
#include "text.h"

namespace devfacts::tool {

const char counter_names[counter_count][20] = {
    "rx_packets",       "tx_packets",        "rx_bytes",          "tx_bytes",        "rx_errors",
    "tx_errors",        "rx_dropped",        "tx_dropped",        "multicast",       "collisions",
    "rx_length_errors", "rx_over_errors",    "rx_crc_errors",     "rx_frame_errors", "rx_fifo_errors",
    "rx_missed_errors", "tx_aborted_errors", "tx_carrier_errors", "tx_fifo_errors",  "tx_heartbeat_errors",
    "tx_window_errors", "rx_compressed",     "tx_compressed",
};

namespace {

void print_addresses(document &out, const char *name, const ifi_entry &entry, uint16_t family) {
  char text[INET6_ADDRSTRLEN];
  out.begin_list(name);
  for (const ipi_entry *address = nullptr; (address = ipi_next(&entry, address)) != nullptr;) {
    if (address->family == family && address->addr != nullptr) out.text(name, ifi_ip_ntop(text, sizeof text, address));
  }
  out.end_list();
}

void print_counters(document &out, const rtnl_link_stats *stats) {
  for (unsigned i = 0; i < counter_count; ++i) {
    out.number(counter_names[i], stats != nullptr ? counter_of(*stats, i) : 0, stats != nullptr);
  }
}

void print_interface(document &out, const ifi_entry &entry) {
  char master[IF_NAMESIZE];
  const bool has_master = entry.master != 0 && if_indextoname(static_cast<unsigned>(entry.master), master) != nullptr;
  out.begin_group("interface");
  out.text("name", entry.name);
  out.text("status", (entry.flags & IFF_UP) != 0 ? "up" : "down");
  out.text("master", has_master ? master : nullptr);
  out.address("hwaddr", entry.hwaddr);
  print_addresses(out, "ipv4", entry, AF_INET);
  print_addresses(out, "ipv6", entry, AF_INET6);
  print_counters(out, entry.stats);
  out.end_group("interface");
}

bool is_named(const ifi_entry &entry, const char *name) {
  return name == nullptr || (entry.name != nullptr && std::strcmp(entry.name, name) == 0);
}

void print_document(form wanted, const char *name) {
  document out(wanted, "netstats", absence::leaves_out);
  out.begin_list("interfaces");
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    if (is_named(*entry, name)) print_interface(out, *entry);
  }
  out.end_list();
}

}  // namespace

exit_status net_command(const request &asked) {
  const char *name = asked.arguments[0];
  if (asked.is_watched()) return watch_interfaces(name);
  ifi_get_all_ip();
  const bool is_there = name == nullptr || ifi_find_by_name(name) != nullptr;
  if (is_there) print_document(asked.wanted_form(), name);
  ifi_free_all();
  return is_there ? done : refuse_interface(name);
}

}  // namespace devfacts::tool
