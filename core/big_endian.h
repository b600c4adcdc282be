// A number in the byte order of stored records: most significant byte first, at any address.
#pragma once

#include <cstddef>
#include <cstdint>

namespace devfacts {

template <class T>
class big_endian {
 public:
  // cppcheck-suppress uninitMemberVar  ; such records are filled from outside
  big_endian() = default;
  constexpr big_endian(T value) {
    for (std::size_t i = sizeof value; i-- > 0; value = static_cast<T>(value >> 8)) {
      bytes_[i] = static_cast<uint8_t>(value);
    }
  }

  constexpr T value() const {
    T value = 0;
    for (const uint8_t byte : bytes_) value = static_cast<T>(value << 8 | byte);
    return value;
  }

  // Most differ in their first byte.
  friend constexpr bool operator==(const big_endian &one, const big_endian &other) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
      if (one.bytes_[i] != other.bytes_[i]) return false;
    }
    return true;
  }

 private:
  uint8_t bytes_[sizeof(T)];
};

}  // namespace devfacts
