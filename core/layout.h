// Public records, whose fields the programs that link the library find by their places.
#pragma once

#include <cstddef>

namespace devfacts {

consteval std::size_t size_here(std::size_t size32, std::size_t size64) {
  return sizeof(void *) == 4 ? size32 : size64;
}

}  // namespace devfacts

// The record's size where a pointer has four bytes and where it has eight, and all its fields, each with {} behind it.
// Does not compile where these stand in another order or the size is another one. A field in front of padding has its
// own size checked beside it.
#define DEVFACTS_LAYOUT(record, size32, size64, ...) \
  static_assert(sizeof(record{__VA_ARGS__}) == devfacts::size_here(size32, size64))
