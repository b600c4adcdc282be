// Everything about a wireless interface, in one record.
#include <devfacts/core.h>
#include <devfacts/product.h>
#include <devfacts/wireless.h>

#include "core/layout.h"

DEVFACTS_LAYOUT(iw_limit_value, 8, 8, .present{}, .value{});
static_assert(sizeof(iw_limit_value::present) == 1 && sizeof(iw_status::essid_flags) == 1);
DEVFACTS_LAYOUT(iw_radio_limits_t, 40, 48, .antenna_gain{}, .txpower_offset{}, .min_txpower{}, .frequency_offset{},
                .allowed_modulations{}, .ieee_band{});
// A processor may align 64-bit words by four bytes.
DEVFACTS_LAYOUT(iw_status, alignof(iw_status) == 4 ? 372 : 376, 392, .ifname{}, .vendor{}, .ieee_name{}, .essid{},
                .essid_length{}, .essid_flags{}, .mode{}, .ap_addr{}, .bit_rate{}, .bit_rates{}, .frequency{},
                .channel{}, .signal_level{}, .noise_level{}, .encoding_flags{}, .txpower{}, .tx_total{}, .tx_retry{},
                .rx_total{}, .rx_errors{}, .state_init{}, .state_scan{}, .state_auth{}, .state_assoc{}, .state_run{},
                .limits{});

// Each query stands for itself: one that fails stops nothing, and its fields stay zero.
int iw_info(iw_status *status, const char *name) {
  *status = {};
  status->ifname = name;
  status->vendor = cpu_vendor();
  iw_ieee_name(status, name);
  iw_essid(status, name);
  iw_operation_mode(status, name);
  iw_freq_channel(status, name);
  iw_ap_addr(status, name);
  iw_current_bit_rate(status, name);
  iw_bitrates(status, name);
  iw_rssi(status, name);
  iw_encoding_flags(status, name);
  iw_txpower(status, name);
  iw_tx_retry(status, name);
  iw_tx_total(status, name);
  iw_rx_errors(status, name);
  iw_rx_total(status, name);
  iw_read_states(status);
  iw_radio_limits(&status->limits, name);
  ioctl_close();
  return 0;
}
