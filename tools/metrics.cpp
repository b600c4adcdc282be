// Counters, rates and signals in the text form that Prometheus and its kin read.
#include <devfacts/product.h>
#include <net/if.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <span>
#include <utility>

#include "interface.h"
#include "link.h"
#include "net.h"
#include "peers.h"
#include "product.h"
#include "radio.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
constexpr double bits = 8;  // of a byte, the unit of rates
constexpr double megabit = 1e6;
constexpr double min_frequency = 1e6;  // a smaller one is a channel's number

struct label {
  const char *name;
  const char *value;
};

// The samples of one name, which stand together under its help.
class family {
 public:
  family(const char *name, const char *type, const char *help) : name_(name), type_(type), help_(help) {}

  // A value that is no number is not there.
  void sample(std::initializer_list<label> labels, double value) {
    if (!std::isfinite(value)) return;
    if (!std::exchange(has_help_, true)) {
      std::printf("# HELP devfacts_%s %s\n# TYPE devfacts_%s %s\n", name_, help_, name_, type_);
    }
    std::printf("devfacts_%s", name_);
    char separator = '{';
    for (const label &each : labels) {
      if (each.value == nullptr) continue;
      std::printf("%c%s=\"", separator, each.name);
      print_visible(stdout, each.value, quoting::label);
      std::putchar('"');
      separator = ',';
    }
    std::printf("%s %.15g\n", separator == ',' ? "}" : "", value);
  }

 private:
  const char *name_;
  const char *type_;
  const char *help_;
  bool has_help_ = false;
};

void print_product() {
  const product_caps_t *caps = product_caps_get();
  char serial[64];
  char version[256];
  const bool is_described = caps != nullptr;
  family("product_info", "gauge", "The product; always 1.")
      .sample({{"product_name", is_described ? product_name() : nullptr},
               {"manufacturer", is_described ? product_manufacturer() : nullptr},
               {"hardware", is_described ? caps->hardware.value : nullptr},
               {"serial_no", known_serial_no(serial, sizeof serial)},
               {"firmware_version", read_firmware_version(version, sizeof version)}},
              1);
}

// The kernel's rx_ and tx_ in whole words.
void print_counter(unsigned index) {
  const char *const name = counter_names[index];
  const bool is_received = std::strncmp(name, "rx_", 3) == 0, is_sent = std::strncmp(name, "tx_", 3) == 0;
  char whole[48];
  char help[64];
  std::snprintf(whole, sizeof whole, "network_%s%.19s_total",
                is_received ? "receive_"
                : is_sent   ? "transmit_"
                            : "",
                is_received || is_sent ? name + 3 : name);
  std::snprintf(help, sizeof help, "The kernel's counter %.19s, of 32 bits.", name);
  family samples(whole, "counter", help);
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    if (entry->name != nullptr && entry->stats != nullptr) {
      samples.sample({{"interface", entry->name}}, counter_of(*entry->stats, index));
    }
  }
}

void print_states() {
  family samples("network_up", "gauge", "1 if the interface is up (IFF_UP).");
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    if (entry->name != nullptr) samples.sample({{"interface", entry->name}}, (entry->flags & IFF_UP) != 0 ? 1 : 0);
  }
}

double speed_of(const link_facts &facts) { return facts.has_speed ? facts.status.speed * megabit / bits : unknown; }
double carrier_of(const link_facts &facts) { return facts.has_link ? facts.status.link : unknown; }

void print_links(const char *name, const char *help, double (*value_of)(const link_facts &facts)) {
  family samples(name, "gauge", help);
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    link_facts facts;
    if (entry->name != nullptr && read_link(facts, entry->name)) {
      samples.sample({{"interface", entry->name}}, value_of(facts));
    }
  }
}

double counter_value(const radio_facts &facts, fact which, uint32_t value) {
  return facts.has(which) ? value : unknown;
}
double level_value(const radio_facts &facts, uint8_t level) {
  return facts.has(fact::signal) && is_dbm(level) ? to_dbm(level) : unknown;
}

// Values of a radio.
constexpr struct {
  const char *name;
  const char *type;
  const char *help;
  double (*value)(const radio_facts &facts);
} radio_values[] = {
    {"wireless_receive_packets_total", "counter", "Packets that the radio received.",
     [](const radio_facts &facts) { return counter_value(facts, fact::rx_total, facts.status.rx_total); }},
    {"wireless_receive_errors_total", "counter", "Received packets that the driver dropped.",
     [](const radio_facts &facts) { return counter_value(facts, fact::rx_errors, facts.status.rx_errors); }},
    {"wireless_transmit_packets_total", "counter", "Packets that the radio sent.",
     [](const radio_facts &facts) { return counter_value(facts, fact::tx_total, facts.status.tx_total); }},
    {"wireless_transmit_retries_total", "counter", "Packets that the radio sent again.",
     [](const radio_facts &facts) { return counter_value(facts, fact::tx_retry, facts.status.tx_retry); }},
    {"wireless_signal_dbm", "gauge", "Signal level.",
     [](const radio_facts &facts) { return level_value(facts, facts.status.signal_level); }},
    {"wireless_noise_dbm", "gauge", "Noise level.",
     [](const radio_facts &facts) { return level_value(facts, facts.status.noise_level); }},
    {"wireless_frequency_hertz", "gauge", "Frequency of the channel.",
     [](const radio_facts &facts) {
       return facts.status.frequency >= min_frequency ? facts.status.frequency : unknown;
     }},
    {"wireless_channel", "gauge", "Number of the channel.",
     [](const radio_facts &facts) {
       return facts.status.channel != radio_facts::no_channel ? facts.status.channel : unknown;
     }},
    {"wireless_speed_bytes", "gauge", "Current rate in bytes per second.",
     [](const radio_facts &facts) { return facts.has(fact::bit_rate) ? facts.status.bit_rate / bits : unknown; }},
};

constexpr struct {
  char name[8];
  int64_t iw_status::*time;
} states[] = {{"init", &iw_status::state_init},
              {"scan", &iw_status::state_scan},
              {"auth", &iw_status::state_auth},
              {"assoc", &iw_status::state_assoc},
              {"run", &iw_status::state_run}};

void print_radios(std::span<const radio_facts> radios) {
  for (const auto &each : radio_values) {
    family samples(each.name, each.type, each.help);
    for (const radio_facts &radio : radios) samples.sample({{"interface", radio.status.ifname}}, each.value(radio));
  }
  family samples("wireless_state_seconds_total", "counter", "Time that the driver spent in each of its states.");
  for (const radio_facts &radio : radios) {
    for (const auto &state : states) {
      const int64_t time = radio.status.*state.time;
      samples.sample({{"interface", radio.status.ifname}, {"state", state.name}},
                     time != radio_facts::no_time ? static_cast<double>(time) / 1000 : unknown);
    }
  }
}

// A station that the file names twice has one signal.
bool is_repeated(const peer_table &peers, size_t index) {
  for (size_t i = 0; i < index; ++i) {
    if (std::memcmp(peers.row(i).mac, peers.row(index).mac, sizeof peers.row(i).mac) == 0) return true;
  }
  return false;
}

void print_signals(family &samples, const char *interface, const peer_table &peers) {
  constexpr char chains[chain_count][2] = {"0", "1", "2"};
  for (size_t i = 0; i < peers.size(); ++i) {
    if (is_repeated(peers, i)) continue;
    char station[sizeof "00:00:00:00:00:00"];
    ifi_mac_ntop(station, sizeof station, peers.row(i).mac);
    for (unsigned chain = 0; chain < chain_count; ++chain) {
      // A chain without an antenna has 0.
      if (!peers.has_strength(i, chain) || peers.strength(i, chain) >= 0) continue;
      samples.sample({{"interface", interface}, {"peer", station}, {"chain", chains[chain]}}, peers.strength(i, chain));
    }
  }
}

void print_peers(std::span<const radio_facts> radios) {
  family counts("wireless_peers", "gauge", "Stations that are connected.");
  for (const radio_facts &radio : radios) {
    peer_table peers;
    if (peers.read(radio.status.ifname)) {
      counts.sample({{"interface", radio.status.ifname}}, static_cast<double>(peers.size()));
    }
  }
  family samples("peer_signal_dbm", "gauge", "Strength of the last packet from a station, for each receive chain.");
  for (const radio_facts &radio : radios) {
    peer_table peers;
    if (peers.read(radio.status.ifname)) print_signals(samples, radio.status.ifname, peers);
  }
}

}  // namespace

exit_status metrics_command(const request & /*asked*/) {
  ifi_get_all();
  const radio_list radios = collect_radios();
  print_product();
  print_states();
  for (unsigned i = 0; i < counter_count; ++i) print_counter(i);
  print_links("network_speed_bytes", "Rate of the link in bytes per second.", speed_of);
  print_links("network_carrier", "1 if the link is up.", carrier_of);
  print_radios({radios.rows.get(), radios.count});
  print_peers({radios.rows.get(), radios.count});
  ifi_free_all();
  return done;
}

}  // namespace devfacts::tool
