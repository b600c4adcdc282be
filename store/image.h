// The stored form of the whole table: a header and one record after the other, big-endian on every machine.
#pragma once

#include <cstddef>
#include <span>

namespace devfacts {

// What an image can start at: every multiple of this.
inline constexpr std::size_t image_step = 16;
// More than a scan considers is not written either.
inline constexpr std::size_t longest_image = 65535;
inline constexpr std::size_t shortest_image = 17;

// Are these bytes the header of an image of a length that a scan considers?
bool is_candidate(std::span<const std::byte, image_step> bytes);

// Puts the records of the image at the descriptor's position into the table: 0 for all of a whole image; -1 otherwise,
// and then those in front of the fault are in the table.
int eeprom_load_image(int fd);

// The bytes of the image that the table makes; its header alone where it holds no record.
std::size_t eeprom_image_size();

// Makes the table's image in this room, which has its size.
void write_image(std::span<std::byte> room);

}  // namespace devfacts
