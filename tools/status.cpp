#include "status.h"

#include <arpa/inet.h>
#include <devfacts/product.h>
#include <net/if.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "interface.h"
#include "link.h"
#include "net.h"
#include "product.h"
#include "radio.h"
#include "screen.h"
#include "store.h"

namespace devfacts::tool {
namespace {

constexpr size_t name_width = 20;
constexpr size_t max_shown_peers = 8;

enum class reading : bool { once, watched };

unsigned record_count;  // a walk over records has no context of its own

void print_identity() {
  const product_caps_t *caps = product_caps_get();
  char line[80];
  print_heading(caps != nullptr ? product_name() : "no product description");
  side_by_side details(0);
  if (caps != nullptr) details.add("%s", product_manufacturer());
  if (caps != nullptr && caps->hardware.present != 0) details.add("%s", caps->hardware.value);
  if (known_serial_no(line, sizeof line) != nullptr) details.add("serial %s", line);
  if (read_firmware_version(line, sizeof line) != nullptr) details.add("firmware %s", line);
}

void print_link(const char *name) {
  link_facts facts;
  char text[32] = "-";
  char duplex[sizeof "full"] = "";
  if (read_link(facts, name)) {
    eth_duplex2str(&facts.status, duplex, sizeof duplex);
    if (facts.has_link && facts.status.link == 0) {
      std::strcpy(text, "no link");
    } else if (facts.has_speed) {
      std::snprintf(text, sizeof text, "%u Mbit/s %s", facts.status.speed, duplex);
    } else if (facts.has_link) {
      std::strcpy(text, "link");
    }
  }
  std::printf("%-18s", text);
}

// What a counter of bytes has, or how fast it grows.
void print_bytes(const ifi_entry &entry, reading kind, char direction, uint32_t bytes) {
  if (kind == reading::watched) {
    print_amount(rate_of(entry.name, direction, bytes), "B/s");
  } else {
    print_amount(bytes, "B");
  }
}

void print_addresses(const ifi_entry &entry) {
  side_by_side details(name_width);
  for (const ipi_entry *address = nullptr; (address = ipi_next(&entry, address)) != nullptr;) {
    char text[INET6_ADDRSTRLEN] = "?";
    if (ifi_ip_ntop(text, sizeof text, address) != nullptr)
      details.add("%s/%d", text, static_cast<int>(address->prefixlen));
  }
  if (entry.stats == nullptr) return;
  const rtnl_link_stats &stats = *entry.stats;
  if (stats.rx_errors != 0 || stats.tx_errors != 0) {
    details.add("errors %u received, %u sent", stats.rx_errors, stats.tx_errors);
  }
}

void print_interface(const ifi_entry &entry, reading kind) {
  const bool is_up = (entry.flags & IFF_UP) != 0;
  print_column(entry.name, name_width);
  if (is_up) paint(colour::green);
  std::printf("%-6s", is_up ? "up" : "down");
  if (is_up) paint(colour::none);
  print_link(entry.name);
  if (entry.stats != nullptr) {
    print_bytes(entry, kind, 'I', entry.stats->rx_bytes);
    print_bytes(entry, kind, 'O', entry.stats->tx_bytes);
  }
  std::putchar('\n');
  print_addresses(entry);
}

void print_interfaces(const char *name, reading kind) {
  print_heading("INTERFACES          STATE LINK                RECEIVED       SENT");
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    if (entry->name != nullptr && (name == nullptr || std::strcmp(entry->name, name) == 0)) {
      print_interface(*entry, kind);
    }
  }
}

void print_channel(const iw_status &status) {
  char text[32] = "-";
  const bool is_frequency = status.frequency >= 1e6;
  if (is_frequency && status.channel != radio_facts::no_channel) {
    std::snprintf(text, sizeof text, "%d, %.0f MHz", status.channel, status.frequency / 1e6);
  } else if (is_frequency || std::isfinite(status.frequency)) {
    std::snprintf(text, sizeof text, is_frequency ? "%.0f MHz" : "%.0f", status.frequency / (is_frequency ? 1e6 : 1));
  }
  std::printf("%-16s", text);
}

void print_level(const radio_facts &facts) {
  if (!facts.has(fact::signal)) {
    std::putchar('-');
  } else if (is_dbm(facts.status.signal_level)) {
    print_signal(to_dbm(facts.status.signal_level));
  } else {
    std::printf("level %u", facts.status.signal_level);
  }
  std::putchar('\n');
}

constexpr struct {
  fact which;
  char text[10];
  uint32_t iw_status::*counter;
} radio_counters[] = {{fact::tx_total, "sent", &iw_status::tx_total},
                      {fact::tx_retry, "again", &iw_status::tx_retry},
                      {fact::rx_total, "received", &iw_status::rx_total},
                      {fact::rx_errors, "dropped", &iw_status::rx_errors}};

void print_packets(const radio_facts &facts, reading kind) {
  side_by_side packets(name_width);
  for (const auto &each : radio_counters) {
    const uint32_t counter = facts.status.*each.counter;
    if (!facts.has(each.which)) continue;
    if (kind == reading::once) {
      packets.add("%s %u", each.text, counter);
      continue;
    }
    const double rate = rate_of(facts.status.ifname, each.text[0], counter);
    if (std::isfinite(rate)) packets.add("%s %.1f/s", each.text, rate);
  }
}

void print_radio(const radio_facts &facts, reading kind) {
  const iw_status &status = facts.status;
  print_column(status.ifname, name_width);
  if (!facts.has_answer()) {
    std::puts("no driver answers, and there are no files of one");
    return;
  }
  print_channel(status);
  print_level(facts);
  {
    side_by_side details(name_width);
    if (facts.has(fact::essid)) details.add("\"%s\"", status.essid);
    if (facts.has(fact::mode) && iw_operation_mode2str(status.mode) != nullptr) {
      details.add("%s", iw_operation_mode2str(status.mode));
    }
    if (facts.has(fact::bit_rate)) details.add("%.1f Mbit/s", status.bit_rate / 1e6);
    if (facts.has(fact::signal) && is_dbm(status.noise_level)) details.add("noise %d dBm", to_dbm(status.noise_level));
  }
  print_packets(facts, kind);
}

// The strongest chain of each station; a chain without an antenna has 0.
void print_peers(const peer_table &peers, size_t max_count) {
  for (size_t i = 0; i < std::min(peers.size(), max_count); ++i) {
    char text[sizeof "00:00:00:00:00:00"];
    int strength = 0;
    for (unsigned chain = 0; chain < chain_count; ++chain) {
      const int each = peers.has_strength(i, chain) ? peers.strength(i, chain) : 0;
      if (each < 0 && (strength == 0 || each > strength)) strength = each;
    }
    std::printf("  %s ", ifi_mac_ntop(text, sizeof text, peers.row(i).mac));
    if (strength != 0) {
      print_signal(strength);
    } else {
      std::putchar('-');
    }
    std::putchar('\n');
  }
  if (peers.size() > max_count) std::printf("  and %zu more\n", peers.size() - max_count);
}

constexpr char radio_heading[] = "RADIOS              CHANNEL         SIGNAL";

void print_radios(reading kind) {
  const radio_list radios = collect_radios();
  if (radios.count == 0) return;
  std::putchar('\n');
  print_heading(radio_heading);
  for (size_t i = 0; i < radios.count; ++i) {
    const radio_facts &facts = radios.rows.get()[i];
    peer_table peers;
    print_radio(facts, kind);
    if (peers.read(facts.status.ifname)) print_peers(peers, max_shown_peers);
  }
}

int count_record(const eeprom_record * /*record*/) {
  ++record_count;
  return 0;
}

void print_records() {
  const store_session store(purpose::looking);
  record_count = 0;
  std::putchar('\n');
  print_heading("RECORDS");
  if (!store) {
    std::puts("no store that can be read");
    return;
  }
  const bool is_whole = store.load();
  eeprom_for_each(count_record);
  std::printf("%u in %s, %u bytes%s\n", record_count, store.name(), image_size(), is_whole ? "" : "; no whole image");
}

}  // namespace

exit_status status_command(const request &asked) {
  const reading kind = asked.is_watched() ? reading::watched : reading::once;
  ifi_get_all_ip();
  print_identity();
  std::putchar('\n');
  print_interfaces(nullptr, kind);
  print_radios(kind);
  print_records();
  ifi_free_all();
  return done;
}

exit_status watch_interfaces(const char *name) {
  ifi_get_all_ip();
  const bool is_there = name == nullptr || ifi_find_by_name(name) != nullptr;
  if (is_there) print_interfaces(name, reading::watched);
  ifi_free_all();
  return is_there ? done : refuse_interface(name);
}

exit_status watch_radio(const char *name) {
  radio_facts facts;
  ask_radio(facts, name);
  print_heading(radio_heading);
  print_radio(facts, reading::watched);
  return done;
}

exit_status watch_peers(const peer_table &peers) {
  print_heading("STATIONS            SIGNAL");
  print_peers(peers, peers.size());
  return done;
}

}  // namespace devfacts::tool
