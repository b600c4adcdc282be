// What the capability object is read from, in the order of reading.
#pragma once

#include <devfacts/product.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace devfacts {

enum class slot_type : uint8_t { string, u32, boolean };

// A slot of a record and the end of its key.
struct caps_field {
  const char *name;
  uint16_t offset;
  slot_type type;
};

// A list: how its rows are found and filled, and at which places its owner has their count and array.
struct caps_list {
  const char *suffix;  // an index has a row if this key exists
  uint16_t row_size;
  uint16_t count_at;
  uint16_t rows_at;
  std::span<const caps_field> fields;
  void (*finish)(void *row) = nullptr;  // what remains to be done
  const char *inner_name = nullptr;     // of the list in each row, if there is one
  const caps_list *inner = nullptr;
};

// A part of the object: fields under a prefix, or a list.
struct caps_section {
  const char *prefix;
  std::span<const caps_field> fields;
  const caps_list *list;
};

extern const std::span<const caps_section> caps_sections;

}  // namespace devfacts
