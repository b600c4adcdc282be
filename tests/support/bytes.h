// Records as bytes, and bytes and numbers as text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace test {

// Big-endian is the device: a whole board, or an emulation of its user space.
inline constexpr bool is_big_endian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
inline const bool is_emulated = is_big_endian && std::getenv("BOARD") == nullptr;

template <class T>
std::string bytes_of(const T &record) {
  return {reinterpret_cast<const char *>(&record), sizeof record};
}

inline std::string padded(std::string bytes) { return bytes.append(-bytes.size() % 4, '\0'); }

// The bytes, each NUL as a dot; "-" for null.
inline std::string shown(const void *bytes, size_t count) {
  std::string text = bytes == nullptr ? "-" : std::string(static_cast<const char *>(bytes), count);
  std::replace(text.begin(), text.end(), '\0', '.');
  return text;
}

inline std::string text_or_none(const char *text) { return text == nullptr ? "(none)" : text; }

// Numbers in decimal, each followed by a blank.
template <class... Numbers>
std::string listed(const Numbers &...numbers) {
  return ((std::to_string(numbers) + " ") + ...);
}

}  // namespace test
