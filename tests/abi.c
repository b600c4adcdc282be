/*
 * The binary interface of the public records: where each field is and how large it is. A program that was linked before
 * reads the fields at these places, so a row changes only with the library's soname.
 *
 * Nothing runs: this file compiles, or names the record and the field that moved. The same file as C++ finds a field
 * that is missing here.
 */
#include <assert.h>
#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <devfacts/net.h>
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <devfacts/wireless.h>
#include <stddef.h>

#include "platform/cfg_store.h"

/* A record's fields in their order: F(field, its offset and size with pointers of four bytes, the same with eight). */
/* clang-format off */
#define FIRST_MATCH_U32(F, R) F(R, value, 0, 4, 0, 4) F(R, found, 4, 1, 4, 1)
#define FIRST_MATCH_STRING(F, R) F(R, value, 0, 4, 0, 8) F(R, found, 4, 1, 8, 1)
#define KEYVAL_ENTRY(F, R) F(R, value, 0, 4, 0, 8) F(R, length, 4, 4, 8, 4)
#define KEYVAL_LIST(F, R) F(R, rows, 0, 4, 0, 8) F(R, count, 4, 4, 8, 4)
#define LIST_LINK(F, R) F(R, next, 0, 4, 0, 8) F(R, prev, 4, 4, 8, 8)
#define IFI_ENTRY(F, R) F(R, list, 0, 8, 0, 16) F(R, addrs, 8, 8, 16, 16) F(R, index, 16, 4, 32, 4) \
  F(R, master, 20, 4, 36, 4) F(R, name, 24, 4, 40, 8) F(R, hwaddr, 28, 6, 48, 6) F(R, broadcast, 34, 6, 54, 6) \
  F(R, type, 40, 2, 60, 2) F(R, txqlen, 44, 4, 64, 4) F(R, flags, 48, 4, 68, 4) F(R, stats, 52, 4, 72, 8)
#define IPI_ENTRY(F, R) F(R, list, 0, 8, 0, 16) F(R, family, 8, 2, 16, 2) F(R, prefixlen, 12, 4, 20, 4) \
  F(R, addr, 16, 4, 24, 8) F(R, broadcast, 20, 4, 32, 8)
#define NL_HANDLE(F, R) F(R, fd, 0, 4, 0, 4) F(R, local, 4, 12, 4, 12) F(R, peer, 16, 12, 16, 12) \
  F(R, seq, 28, 4, 28, 4) F(R, dump, 32, 4, 32, 4)
#define ETH_STATUS(F, R) F(R, speed, 0, 2, 0, 2) F(R, duplex, 2, 1, 2, 1) F(R, link, 3, 1, 3, 1) \
  F(R, supported, 4, 4, 4, 4) F(R, perm_addr, 8, 6, 8, 6)
#define CAPS_STRING(F, R) F(R, value, 0, 4, 0, 8) F(R, present, 4, 1, 8, 1)
#define CAPS_U32(F, R) F(R, value, 0, 4, 0, 4) F(R, present, 4, 1, 4, 1)
#define CAPS_BOOL(F, R) F(R, value, 0, 4, 0, 4) F(R, present, 4, 1, 4, 1)
#define CAPS_FREQ_RANGE(F, R) F(R, range, 0, 8, 0, 16) F(R, low, 8, 4, 16, 4) F(R, high, 12, 4, 20, 4) \
  F(R, max_eirp, 16, 8, 24, 8) F(R, max_txpower, 24, 8, 32, 8) F(R, max_width, 32, 8, 40, 8) \
  F(R, dfs_required, 40, 8, 48, 16) F(R, range_limits, 48, 8, 64, 16)
#define CAPS_RADIO(F, R) F(R, master, 0, 8, 0, 16) F(R, ieee_band, 8, 8, 16, 16) \
  F(R, allowed_modulations, 16, 8, 32, 16) F(R, txpower_offset, 24, 8, 48, 8) F(R, min_txpower, 32, 8, 56, 8) \
  F(R, antenna_gain, 40, 8, 64, 8) F(R, ignore_crr, 48, 8, 72, 8) F(R, cpe_fixed_channels, 56, 8, 80, 8) \
  F(R, frequency_offset, 64, 8, 88, 8) F(R, range_count, 72, 4, 96, 4) F(R, ranges, 76, 4, 104, 8) \
  F(R, band_edge_low, 80, 8, 112, 8) F(R, band_edge_middle, 88, 8, 120, 8) F(R, band_edge_high, 96, 8, 128, 8)
#define CAPS_LIMIT_FREQ(F, R) F(R, frequency, 0, 8, 0, 8) F(R, dfs_required, 8, 8, 8, 16) \
  F(R, max_txpower, 16, 8, 24, 16) F(R, max_eirp, 24, 8, 40, 16) F(R, allowed_widths, 32, 8, 56, 16)
#define CAPS_LIMIT_TABLE(F, R) F(R, table_name, 0, 8, 0, 16) F(R, freq_count, 8, 4, 16, 4) F(R, freqs, 12, 4, 24, 8)
#define CAPS_LED(F, R) F(R, devname, 0, 8, 0, 16) F(R, name, 8, 8, 16, 16)
#define PRODUCT_CAPS_T(F, R) F(R, loaded, 0, 4, 0, 4) F(R, id, 4, 8, 8, 16) F(R, name, 12, 8, 24, 16) \
  F(R, hardware, 20, 8, 40, 16) F(R, enterprise_name, 28, 8, 56, 16) F(R, countrycode, 36, 8, 72, 16) \
  F(R, enterprise_oid, 44, 8, 88, 16) F(R, radio_count, 52, 4, 104, 4) F(R, radios, 56, 4, 112, 8) \
  F(R, limit_table_count, 60, 4, 120, 4) F(R, limit_tables, 64, 4, 128, 8) F(R, led_power_name, 68, 8, 136, 16) \
  F(R, led_blinkled_name, 76, 8, 152, 16) F(R, led_lan_count, 84, 4, 168, 4) F(R, led_lan, 88, 4, 176, 8) \
  F(R, led_rssi_count, 92, 4, 184, 4) F(R, led_rssi, 96, 4, 192, 8) F(R, protocol_name, 100, 8, 200, 16) \
  F(R, pppoe_filter_control, 108, 8, 216, 8) F(R, arpnat_behind_dhcp_snooper, 116, 8, 224, 8)
#define EEPROM_RECORD(F, R) F(R, length, 0, 2, 0, 2) F(R, id, 2, 2, 2, 2)
#define IW_RANGE_FREQ(F, R) F(R, m, 0, 4, 0, 4) F(R, e, 4, 2, 4, 2) F(R, unused6, 6, 2, 6, 2) \
  F(R, channel, 8, 4, 8, 4) F(R, unused12, 12, 4, 12, 4)
#define IW_RANGE_RECORD(F, R) F(R, unused0, 0, 52, 0, 52) F(R, num_bitrates, 52, 1, 52, 1) \
  F(R, unused53, 53, 3, 53, 3) F(R, bitrate, 56, 128, 56, 128) F(R, unused184, 184, 122, 184, 122) \
  F(R, num_frequency, 306, 1, 306, 1) F(R, unused307, 307, 1, 307, 1) F(R, freq, 308, 4080, 308, 4080) \
  F(R, unused4388, 4388, 4, 4388, 4)
#define IW_LIMIT_VALUE(F, R) F(R, present, 0, 1, 0, 1) F(R, value, 4, 4, 4, 4)
#define IW_RADIO_LIMITS_T(F, R) F(R, antenna_gain, 0, 8, 0, 8) F(R, txpower_offset, 8, 8, 8, 8) \
  F(R, min_txpower, 16, 8, 16, 8) F(R, frequency_offset, 24, 8, 24, 8) F(R, allowed_modulations, 32, 4, 32, 8) \
  F(R, ieee_band, 36, 4, 40, 8)
#define IW_STATUS(F, R) F(R, ifname, 0, 4, 0, 8) F(R, vendor, 4, 4, 8, 8) F(R, ieee_name, 8, 17, 16, 17) \
  F(R, essid, 25, 64, 33, 64) F(R, essid_length, 92, 4, 100, 4) F(R, essid_flags, 96, 1, 104, 1) \
  F(R, mode, 100, 4, 108, 4) F(R, ap_addr, 104, 16, 112, 16) F(R, bit_rate, 120, 4, 128, 4) \
  F(R, bit_rates, 124, 128, 132, 128) F(R, frequency, 256, 8, 264, 8) F(R, channel, 264, 4, 272, 4) \
  F(R, signal_level, 268, 1, 276, 1) F(R, noise_level, 269, 1, 277, 1) F(R, encoding_flags, 272, 4, 280, 4) \
  F(R, txpower, 276, 4, 284, 4) F(R, tx_total, 280, 4, 288, 4) F(R, tx_retry, 284, 4, 292, 4) \
  F(R, rx_total, 288, 4, 296, 4) F(R, rx_errors, 292, 4, 300, 4) F(R, state_init, 296, 8, 304, 8) \
  F(R, state_scan, 304, 8, 312, 8) F(R, state_auth, 312, 8, 320, 8) F(R, state_assoc, 320, 8, 328, 8) \
  F(R, state_run, 328, 8, 336, 8) F(R, limits, 336, 40, 344, 48)
#define IW_PEER_ENTRY(F, R) F(R, mac, 0, 6, 0, 6) F(R, rssi0, 8, 4, 8, 4) F(R, rssi1, 12, 4, 12, 4) \
  F(R, rssi2, 16, 4, 16, 4)
#define IW_PEERS_LIST(F, R) F(R, count, 0, 4, 0, 4) F(R, rows, 4, 4, 8, 8)
#define CFG_ITERATOR(F, R) F(R, next, 0, 4, 0, 8) F(R, index, 4, 4, 8, 8) F(R, unused, 8, 20, 16, 40) \
  F(R, value, 28, 4, 56, 8)

/* clang-format on */

#define HERE(size32, size64) (sizeof(void *) == 4 ? (size32) : (size64))
#define CHECK_FIELD(record, field, offset32, size32, offset64, size64)                                 \
  static_assert(offsetof(record, field) == HERE(offset32, offset64), #record "." #field " has moved"); \
  static_assert(sizeof((*(record *)NULL).field) == HERE(size32, size64), #record "." #field " has another size");
#ifdef __cplusplus
#define EMPTY(record, field, ...) {},
#define CHECK_COMPLETE(record, FIELDS) [[maybe_unused]] const record all_of_##record{FIELDS(EMPTY, record)};
#else
#define CHECK_COMPLETE(record, FIELDS)
#endif
#define CHECK_RECORD(record, FIELDS, size32, size64)                                  \
  static_assert(sizeof(record) == HERE(size32, size64), #record " has another size"); \
  FIELDS(CHECK_FIELD, record)                                                         \
  CHECK_COMPLETE(record, FIELDS)

CHECK_RECORD(first_match_u32, FIRST_MATCH_U32, 8, 8)
CHECK_RECORD(first_match_string, FIRST_MATCH_STRING, 8, 16)
CHECK_RECORD(keyval_entry, KEYVAL_ENTRY, 8, 16)
CHECK_RECORD(keyval_list, KEYVAL_LIST, 8, 16)
CHECK_RECORD(list_link, LIST_LINK, 8, 16)
CHECK_RECORD(ifi_entry, IFI_ENTRY, 56, 80)
CHECK_RECORD(ipi_entry, IPI_ENTRY, 24, 40)
CHECK_RECORD(nl_handle, NL_HANDLE, 36, 36)
CHECK_RECORD(eth_status, ETH_STATUS, 16, 16)
CHECK_RECORD(caps_string, CAPS_STRING, 8, 16)
CHECK_RECORD(caps_u32, CAPS_U32, 8, 8)
CHECK_RECORD(caps_bool, CAPS_BOOL, 8, 8)
CHECK_RECORD(caps_freq_range, CAPS_FREQ_RANGE, 56, 80)
CHECK_RECORD(caps_radio, CAPS_RADIO, 104, 136)
CHECK_RECORD(caps_limit_freq, CAPS_LIMIT_FREQ, 40, 72)
CHECK_RECORD(caps_limit_table, CAPS_LIMIT_TABLE, 16, 32)
CHECK_RECORD(caps_led, CAPS_LED, 16, 32)
CHECK_RECORD(product_caps_t, PRODUCT_CAPS_T, 124, 232)
CHECK_RECORD(eeprom_record, EEPROM_RECORD, 4, 4)
CHECK_RECORD(iw_range_freq, IW_RANGE_FREQ, 16, 16)
CHECK_RECORD(iw_range_record, IW_RANGE_RECORD, 4392, 4392)
CHECK_RECORD(iw_limit_value, IW_LIMIT_VALUE, 8, 8)
CHECK_RECORD(iw_radio_limits_t, IW_RADIO_LIMITS_T, 40, 48)
CHECK_RECORD(iw_status, IW_STATUS, 376, 392)
CHECK_RECORD(iw_peer_entry, IW_PEER_ENTRY, 20, 20)
CHECK_RECORD(iw_peers_list, IW_PEERS_LIST, 8, 16)
CHECK_RECORD(cfg_iterator, CFG_ITERATOR, 32, 64)
