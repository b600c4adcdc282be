// What the capability object is read from, in the order of reading.
#pragma once

#include <devfacts/product.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace devfacts {

enum class slot_type : uint8_t { string, u32, boolean };

// The parts of all keys, each with its NUL.
inline constexpr char caps_key_parts[] =
    "id\0name\0hardware\0enterprise-name\0countrycode\0enterprise-oid\0protocol-name\0master\0ieee-band\0"
    "allowed-modulations\0txpower-offset\0min-txpower\0antenna-gain\0frequency-offset\0ignore-crr\0"
    "cpe.fixed-channels\0band-edges.low\0band-edges.middle\0band-edges.high\0range-limits\0max-txpower\0max-eirp\0"
    "max-width\0dfs-required\0range\0table-name\0allowed-widths\0frequency\0power.name\0blinkled.name\0devname\0"
    "names\0pppoe-filter-control\0arpnat-behind-dhcp-snooper\0table\0product\0radio\0limits\0led\0led.lan\0"
    "led.rssi\0feature";

// A part of a key, as its place in the above: a pointer would be twice as large, and a relocation, too. Does not
// compile for a text that is missing there.
class caps_key_part {
 public:
  constexpr caps_key_part() = default;
  consteval caps_key_part(const char *part) {
    while (std::string_view(caps_key_parts + place_) != part) {
      place_ += static_cast<uint16_t>(std::string_view(caps_key_parts + place_).size() + 1);
    }
  }

  const char *text() const { return caps_key_parts + place_; }

 private:
  uint16_t place_ = 0;
};

// A slot of a record and the end of its key.
struct caps_field {
  caps_key_part name;
  uint16_t offset;
  slot_type type;
};

// A list: how its rows are found and filled, and at which places its owner has their count and array.
struct caps_list {
  caps_key_part suffix;  // an index has a row if this key exists
  uint16_t row_size;
  uint16_t count_at;
  uint16_t rows_at;
  std::span<const caps_field> fields;
  void (*finish)(void *row) = nullptr;  // what remains to be done
  const caps_list *inner = nullptr;     // in each row, if there is one
  caps_key_part inner_name = {};        // follows the index in its keys
};

// A part of the object: fields under a prefix, or a list.
struct caps_section {
  caps_key_part prefix;
  std::span<const caps_field> fields;
  const caps_list *list;
};

extern const std::span<const caps_section> caps_sections;

}  // namespace devfacts
