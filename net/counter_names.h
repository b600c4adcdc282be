// The kernel's 23 counters of an interface.
#pragma once

namespace devfacts {

// In the order of rtnl_link_stats. Texts in place, not pointers to them, which would cost a relocation each.
constexpr char counter_names[][20] = {
    "rx_packets",       "tx_packets",        "rx_bytes",          "tx_bytes",        "rx_errors",
    "tx_errors",        "rx_dropped",        "tx_dropped",        "multicast",       "collisions",
    "rx_length_errors", "rx_over_errors",    "rx_crc_errors",     "rx_frame_errors", "rx_fifo_errors",
    "rx_missed_errors", "tx_aborted_errors", "tx_carrier_errors", "tx_fifo_errors",  "tx_heartbeat_errors",
    "tx_window_errors", "rx_compressed",     "tx_compressed",
};
static_assert(sizeof counter_names / sizeof *counter_names == 23);

}  // namespace devfacts
