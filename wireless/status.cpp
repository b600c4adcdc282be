// Everything about a wireless interface, in one record.
#include <devfacts/core.h>
#include <devfacts/product.h>
#include <devfacts/wireless.h>

// A query that fails does not stop the others; its fields stay zero.
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
