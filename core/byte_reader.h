// The bounded reader for bytes from outside: it never reads beyond its buffer.
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

  // Copies the record at the current place, in host order and whatever its alignment. False if the input ends before
  // the record does: nothing is read then.
  template <class T>
  bool read(T &record) {
    if (rest_.size() < sizeof record) return false;
    record = read_or_zero<T>();
    return true;
  }

  // The same for callers that accept a short record: the bytes that the input lacks are zero.
  template <class T>
  T read_or_zero() {
    static_assert(std::is_trivially_copyable_v<T>);
    T record{};
    const auto piece = take_up_to(sizeof record);
    std::memcpy(&record, piece.data(), piece.size());
    return record;
  }

  // False if the input has fewer bytes: nothing is taken then.
  bool take(std::size_t count, std::span<const std::byte> &piece) {
    if (rest_.size() < count) return false;
    piece = take_up_to(count);
    return true;
  }

  bool skip(std::size_t count) {
    std::span<const std::byte> skipped;
    return take(count, skipped);
  }

  std::size_t remaining() const { return rest_.size(); }

 private:
  std::span<const std::byte> take_up_to(std::size_t count) {
    const auto piece = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(piece.size());
    return piece;
  }

  std::span<const std::byte> rest_;
};

}  // namespace devfacts
