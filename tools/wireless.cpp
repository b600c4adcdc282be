// What a wireless interface is doing and which stations are connected to it, as XML documents.
#include <devfacts/core.h>
#include <devfacts/wireless.h>

#include <cstdio>
#include <initializer_list>

#include "address.h"
#include "command.h"

namespace devfacts::tool {
namespace {

void print_driver_values(const iw_status &status) {
  xml_str_esc_item("vendor", status.vendor);
  xml_str_esc_item("ieee_name", status.ieee_name);
  xml_str_esc_item("essid", status.essid);
  xml_int64_item("essid_length", status.essid_length);
  xml_int_item("essid_flags", status.essid_flags);
  xml_int64_item("mode", status.mode);
  xml_str_item("mode_name", iw_operation_mode2str(status.mode));
  print_address("ap_addr", reinterpret_cast<const uint8_t *>(status.ap_addr.sa_data));
  xml_int_item("bit_rate", status.bit_rate);
  for (const int32_t rate : status.bit_rates) {
    if (rate != 0) xml_int_item("rate", rate);
  }
  xml_double_item("frequency", status.frequency);
  xml_int_item("channel", status.channel);
  xml_str_item("bandwidth", iw_bandwidth2str(&status));
  xml_int_item("signal_level", status.signal_level);
  xml_int_item("noise_level", status.noise_level);
  xml_int64_item("encoding_flags", status.encoding_flags);
  xml_str_item("security", iw_security_mode2str(status.encoding_flags));
  xml_int_item("txpower", status.txpower);
}

void print_counters(const iw_status &status) {
  xml_int64_item("tx_total", status.tx_total);
  xml_int64_item("tx_retry", status.tx_retry);
  xml_int64_item("rx_total", status.rx_total);
  xml_int64_item("rx_errors", status.rx_errors);
  xml_int64_item("state_init", status.state_init);
  xml_int64_item("state_scan", status.state_scan);
  xml_int64_item("state_auth", status.state_auth);
  xml_int64_item("state_assoc", status.state_assoc);
  xml_int64_item("state_run", status.state_run);
}

void print_limit(const char *name, const iw_limit_value &limit) { xml_int_item_opt(name, limit.value, limit.present); }

void print_limits(const iw_radio_limits_t &limits) {
  print_limit("antenna_gain", limits.antenna_gain);
  print_limit("txpower_offset", limits.txpower_offset);
  print_limit("min_txpower", limits.min_txpower);
  print_limit("frequency_offset", limits.frequency_offset);
  xml_str_esc_item("allowed_modulations", limits.allowed_modulations);
  xml_str_esc_item("ieee_band", limits.ieee_band);
  xml_str_esc_item("countrycode", iw_countrycode_limits());
}

}  // namespace

exit_status wireless(char **arguments) {
  const char *name = arguments[0];
  if (iw_capable(name) == 0) {
    std::fprintf(stderr, "devfacts: \"%s\" is no wireless interface\n", name);
    return failed;
  }
  iw_status status;
  iw_info(&status, name);
  std::puts("<wireless>");
  xml_str_esc_item("name", name);
  print_driver_values(status);
  print_counters(status);
  print_limits(status.limits);
  std::puts("</wireless>");
  return done;
}

exit_status radio(char **arguments) {
  const char *name = arguments[0];
  iw_status status{};
  status.ifname = name;
  for (const auto read : {iw_tx_total, iw_tx_retry, iw_rx_total, iw_rx_errors}) read(&status, name);
  iw_read_states(&status);
  iw_radio_limits(&status.limits, name);
  std::puts("<radio>");
  xml_str_esc_item("name", name);
  print_counters(status);
  print_limits(status.limits);
  std::puts("</radio>");
  return done;
}

exit_status peers(char **arguments) {
  iw_peers_list list{};
  iw_peers(&list, arguments[0]);
  std::puts("<peers>");
  if (arguments[0] == nullptr) xml_int_item("link_established", iw_link_established());
  for (uint32_t i = 0; i < list.count; ++i) {
    const iw_peer_entry &peer = list.rows[i];
    std::puts(" <peer>");
    print_address("mac", peer.mac);
    xml_int_item("rssi0", peer.rssi0);
    xml_int_item("rssi1", peer.rssi1);
    xml_int_item("rssi2", peer.rssi2);
    std::puts(" </peer>");
  }
  std::puts("</peers>");
  iw_peers_free(&list);
  return done;
}

}  // namespace devfacts::tool
