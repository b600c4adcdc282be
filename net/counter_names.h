// The kernel's 23 counters of an interface.
#pragma once

#include <cstring>

namespace devfacts {

// In the order of rtnl_link_stats. One text, each name with its NUL: an array of pointers would cost a relocation each.
constexpr char counter_names[] =
    "rx_packets\0tx_packets\0rx_bytes\0tx_bytes\0rx_errors\0tx_errors\0rx_dropped\0tx_dropped\0multicast\0collisions\0"
    "rx_length_errors\0rx_over_errors\0rx_crc_errors\0rx_frame_errors\0rx_fifo_errors\0rx_missed_errors\0"
    "tx_aborted_errors\0tx_carrier_errors\0tx_fifo_errors\0tx_heartbeat_errors\0tx_window_errors\0"
    "rx_compressed\0tx_compressed\0";

inline const char *next_name(const char *name) { return name + std::strlen(name) + 1; }

}  // namespace devfacts
