// What a wireless interface is doing and which stations are connected to it, as documents.
#include <devfacts/core.h>
#include <devfacts/product.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "interface.h"
#include "peers.h"
#include "radio.h"
#include "status.h"
#include "text.h"

namespace devfacts::tool {
namespace {

// The class of width rests on the protocol's name, and without a mark in that on the rates.
const char *bandwidth(const radio_facts &facts) {
  const bool is_turbo = std::strchr(facts.status.ieee_name, 'T') != nullptr;
  const bool is_known = facts.has(fact::ieee_name) && (is_turbo || facts.has(fact::bit_rates));
  return is_known ? iw_bandwidth2str(&facts.status) : nullptr;
}

void print_rates(document &out, const iw_status &status) {
  out.begin_list("rates");
  for (const int32_t rate : status.bit_rates) {
    if (rate != 0) out.number("rate", rate);
  }
  out.end_list();
}

void print_driver_values(document &out, const radio_facts &facts) {
  const iw_status &status = facts.status;
  const bool has_mode = facts.has(fact::mode), has_encoding = facts.has(fact::encoding);
  const auto *ap_addr = reinterpret_cast<const uint8_t *>(status.ap_addr.sa_data);
  out.text("vendor", status.vendor);
  out.text("ieee_name", facts.has(fact::ieee_name) ? status.ieee_name : nullptr);
  out.text("essid", facts.has(fact::essid) ? status.essid : nullptr);
  out.number("essid_length", status.essid_length, facts.has(fact::essid));
  out.number("essid_flags", status.essid_flags, facts.has(fact::essid));
  out.number("mode", status.mode, has_mode);
  out.text("mode_name", has_mode ? iw_operation_mode2str(status.mode) : nullptr);
  out.address("ap_addr", facts.has(fact::ap_addr) ? ap_addr : nullptr);
  out.number("bit_rate", status.bit_rate, facts.has(fact::bit_rate));
  print_rates(out, status);
  out.decimal("frequency", status.frequency);
  out.number("channel", status.channel, status.channel != radio_facts::no_channel);
  out.text("bandwidth", bandwidth(facts));
  out.number("signal_level", status.signal_level, facts.has(fact::signal));
  out.number("noise_level", status.noise_level, facts.has(fact::signal));
  out.number("encoding_flags", status.encoding_flags, has_encoding);
  out.text("security", has_encoding ? iw_security_mode2str(status.encoding_flags) : nullptr);
  out.number("txpower", status.txpower, facts.has(fact::txpower));
}

constexpr struct {
  char name[10];
  fact which;
  uint32_t iw_status::*counter;
} counters[] = {{"tx_total", fact::tx_total, &iw_status::tx_total},
                {"tx_retry", fact::tx_retry, &iw_status::tx_retry},
                {"rx_total", fact::rx_total, &iw_status::rx_total},
                {"rx_errors", fact::rx_errors, &iw_status::rx_errors}};

constexpr struct {
  char name[12];
  int64_t iw_status::*time;
} states[] = {{"state_init", &iw_status::state_init},
              {"state_scan", &iw_status::state_scan},
              {"state_auth", &iw_status::state_auth},
              {"state_assoc", &iw_status::state_assoc},
              {"state_run", &iw_status::state_run}};

void print_counters(document &out, const radio_facts &facts) {
  for (const auto &each : counters) out.number(each.name, facts.status.*each.counter, facts.has(each.which));
  for (const auto &each : states) {
    const int64_t time = facts.status.*each.time;
    out.number(each.name, time, time != radio_facts::no_time);
  }
}

constexpr struct {
  char name[17];
  iw_limit_value iw_radio_limits_t::*limit;
} limit_values[] = {{"antenna_gain", &iw_radio_limits_t::antenna_gain},
                    {"txpower_offset", &iw_radio_limits_t::txpower_offset},
                    {"min_txpower", &iw_radio_limits_t::min_txpower},
                    {"frequency_offset", &iw_radio_limits_t::frequency_offset}};

void print_limits(document &out, const char *name) {
  iw_radio_limits_t limits;
  iw_radio_limits(&limits, name);
  for (const auto &each : limit_values) {
    const iw_limit_value &limit = limits.*each.limit;
    out.number(each.name, limit.value, limit.present != 0);
  }
  out.text("allowed_modulations", limits.allowed_modulations);
  out.text("ieee_band", limits.ieee_band);
  out.text("countrycode", iw_countrycode_limits());
}

bool is_described(const char *name) {
  const product_caps_t *caps = product_caps_get();
  if (caps == nullptr) return false;
  for (const caps_radio *radio = caps->radios; radio != caps->radios + caps->radio_count; ++radio) {
    if (radio->master.present != 0 && std::strcmp(radio->master.value, name) == 0) return true;
  }
  return false;
}

}  // namespace

exit_status wireless_command(const request &asked) {
  const char *name = asked.arguments[0];
  if (!is_interface_name(name) || iw_capable(name) == 0) return refuse_interface(name, "is not a wireless interface");
  if (asked.is_watched()) return watch_radio(name);
  radio_facts facts;
  ask_radio(facts, name);
  document out(asked.wanted_form(), "wireless");
  out.text("name", name);
  print_driver_values(out, facts);
  print_counters(out, facts);
  print_limits(out, name);
  return done;
}

exit_status radio_command(const request &asked) {
  const char *name = asked.arguments[0];
  radio_facts facts;
  if (!is_interface_name(name) || (!read_radio_files(facts, name) && !is_described(name))) {
    print_error("no radio \"%s\": neither its driver's files nor the product description tell of it", name);
    return failed;
  }
  document out(asked.wanted_form(), "radio");
  out.text("name", name);
  print_counters(out, facts);
  print_limits(out, name);
  return done;
}

}  // namespace devfacts::tool
