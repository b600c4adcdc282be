// The bounded reader for bytes that come from outside: it never looks beyond what it was given.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>

namespace devfacts {

class byte_reader {
 public:
  byte_reader(const void *bytes, std::size_t count) : rest_(static_cast<const std::byte *>(bytes), count) {}

  // A record in host order at the current place, whatever the alignment; what the input lacks of it stays zero.
  template <class T>
  T read() {
    static_assert(std::is_trivially_copyable_v<T>);
    T record{};
    const auto piece = take(sizeof record);
    std::memcpy(&record, piece.data(), piece.size());
    return record;
  }

  // Up to count bytes, fewer at the end.
  std::span<const std::byte> take(std::size_t count) {
    const auto piece = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(piece.size());
    return piece;
  }

  std::size_t left() const { return rest_.size(); }

 private:
  std::span<const std::byte> rest_;
};

}  // namespace devfacts
