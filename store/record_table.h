// The one table of records, indexed by id.
#pragma once

#include <devfacts/store.h>

#include <cstddef>

namespace devfacts {

inline constexpr uint32_t record_head_size = sizeof(eeprom_record);

struct record_table {
  uint32_t capacity;      // number of slots
  eeprom_record **slots;  // by id; null without a record. As a whole null without slots
};

extern constinit record_table eeprom_table;

// The length up to the start of the next record.
constexpr uint32_t padded_size(uint32_t length) { return (length + 3) & ~3U; }

}  // namespace devfacts
