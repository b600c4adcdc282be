// A set of keys that answers "surely not in it" or "perhaps", in a fixed room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace devfacts {

template <std::size_t Bits>
class bit_filter {
 public:
  bool may_hold(uint32_t key) const { return (words_[place(key)] & mask(key)) != 0; }
  void add(uint32_t key) { words_[place(key)] |= mask(key); }
  void add_all() {
    for (uint32_t &word : words_) word = std::numeric_limits<uint32_t>::max();
  }

 private:
  static constexpr std::size_t place(uint32_t key) { return key % Bits / 32; }
  static constexpr uint32_t mask(uint32_t key) { return uint32_t{1} << key % 32; }

  uint32_t words_[Bits / 32]{};
};

// FNV-1a.
constexpr uint32_t text_key(std::string_view text) {
  uint32_t key = 2166136261;
  for (const char byte : text) key = (key ^ static_cast<unsigned char>(byte)) * 16777619;
  return key;
}

}  // namespace devfacts
