// The stored form of the whole table: a header and one record after the other, big-endian on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/big_endian.h"

namespace devfacts {

inline constexpr big_endian<uint32_t> image_magic = 0x57584545;  // "WXEE"

// Sizes that a search considers; no others are written.
inline constexpr uint32_t min_image_size = 17;
inline constexpr uint32_t max_image_size = 65535;

struct image_header {
  big_endian<uint32_t> magic;
  big_endian<uint32_t> total_length;  // header, records and their padding
  big_endian<uint16_t> fixed_one;     // ignored
  big_endian<uint16_t> fixed_zero;    // ignored
  big_endian<uint32_t> must_be_zero;  // ignored by a search
};
static_assert(sizeof(image_header) == 16 && alignof(image_header) == 1);

inline bool is_candidate(const image_header &header) {
  if (header.magic != image_magic) return false;
  const uint32_t total_length = header.total_length.value();
  return total_length >= min_image_size && total_length <= max_image_size;
}

// Adds the records of the image at the descriptor's position to the table. Returns 0 for a whole image; otherwise -1,
// with the records before the damage in the table.
int eeprom_load_image(int fd);

// The size of the table's image; that of the header if there is no record.
std::size_t eeprom_image_size();

// Writes the table's image into a buffer of its size.
void write_image(std::span<std::byte> buffer);

}  // namespace devfacts
