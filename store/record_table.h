// The one table of records, indexed by id.
#pragma once

#include <devfacts/store.h>

#include <cstddef>

namespace devfacts {

inline constexpr uint32_t record_head_size = sizeof(eeprom_record);

struct record_table {
  uint32_t capacity;      // slots there are
  eeprom_record **slots;  // slot number = id; null where there is no record, and as a whole without slots
};

extern constinit record_table eeprom_table;

// The bytes up to where the next record may start.
constexpr uint32_t padded_size(uint32_t length) { return (length + 3) & ~3U; }

}  // namespace devfacts
