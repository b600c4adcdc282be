// The stored form of the whole table: a header and one record after the other, big-endian on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/big_endian.h"

namespace devfacts {

inline constexpr big_endian<uint32_t> image_magic = 0x57584545;  // "WXEE"

// What a search considers; nothing else is written.
inline constexpr uint32_t min_image_size = 17;
inline constexpr uint32_t max_image_size = 65535;

struct image_header {
  big_endian<uint32_t> magic;
  big_endian<uint32_t> total_length;  // header, records and their padding
  big_endian<uint16_t> fixed_one;     // not looked at
  big_endian<uint16_t> fixed_zero;    // not looked at
  big_endian<uint32_t> must_be_zero;  // not looked at by a search
};
static_assert(sizeof(image_header) == 16 && alignof(image_header) == 1);

inline bool is_candidate(const image_header &header) {
  if (header.magic != image_magic) return false;
  const uint32_t total_length = header.total_length.value();
  return total_length >= min_image_size && total_length <= max_image_size;
}

// Puts the records of the image at the descriptor's position into the table: 0 for all of a whole image; -1 otherwise,
// and then those in front of the fault are in the table.
int eeprom_load_image(int fd);

// The bytes of the image that the table makes; its header alone where it holds no record.
std::size_t eeprom_image_size();

// Writes the table's image into a buffer of its size.
void write_image(std::span<std::byte> buffer);

}  // namespace devfacts
