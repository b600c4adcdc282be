// The kernel's counters of an interface.
#pragma once

#include <devfacts/net.h>

namespace devfacts::tool {

constexpr unsigned counter_count = 23;

// In the order of the kernel's record.
extern const char counter_names[counter_count][20];

inline uint32_t counter_of(const rtnl_link_stats &stats, unsigned index) { return (&stats.rx_packets)[index]; }

}  // namespace devfacts::tool
