// What the driver of a radio and its files tell, and which of it is an answer.
#pragma once

#include <devfacts/wireless.h>

#include "core/owner.h"

namespace devfacts::tool {

// Queries that can be refused, in the order in which they are made; those from tx_retry on read files.
enum class fact : uint8_t {
  ieee_name,
  essid,
  mode,
  frequency,
  ap_addr,
  bit_rate,
  bit_rates,
  signal,
  encoding,
  txpower,
  tx_retry,
  tx_total,
  rx_errors,
  rx_total,
};

struct radio_facts {
  static constexpr int32_t no_channel = INT32_MIN;
  static constexpr int64_t no_time = INT64_MIN;

  iw_status status;  // without the limits; a frequency that is not known is no number
  uint32_t answers;  // a bit for each fact

  bool has_answer() const { return answers != 0 || status.state_init != no_time; }
  bool has(fact which) const { return (answers >> static_cast<unsigned>(which) & 1) != 0; }
};

// Asks the driver and reads its files.
void ask_radio(radio_facts &facts, const char *name);

// Reads its files alone. False if there are no files.
bool read_radio_files(radio_facts &facts, const char *name);

// A level byte as a number of dBm; only the upper half of the values can be one.
inline bool is_dbm(uint8_t level) { return level >= 128; }
inline int to_dbm(uint8_t level) { return level - 256; }

struct radio_list {
  malloc_ptr<radio_facts> rows;
  size_t count = 0;
};

// The radios of the device: the interfaces in the list that have wireless extensions, and those that the product
// description names. Their names are good as long as the list is.
radio_list collect_radios();

}  // namespace devfacts::tool
