// The size in bytes of one element of a record, by id; 0 if its elements are not counted.
#pragma once

#include <cstdint>

namespace devfacts {

constexpr uint8_t eeprom_type_size[] = {
    0,  1, 1, 1, 1, 4, 1, 8, 8,   //
    4,  4, 1, 4, 4, 4, 2, 4, 1,   //
    1,  1, 1, 0, 0, 0, 0, 1, 12,  //
    12, 6, 6, 1, 1, 1, 1, 1, 0,   //
};
constexpr uint32_t eeprom_type_count = sizeof eeprom_type_size;
static_assert(eeprom_type_count == 36);

}  // namespace devfacts
