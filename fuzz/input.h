// What a fuzz target passes to the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

namespace fuzz {

inline std::string_view view(const uint8_t *bytes, size_t count) {
  return {reinterpret_cast<const char *>(bytes), count};
}

// The path of a file with these contents, until the next call.
std::string file_with(std::string_view contents);

// Runs what may end the process, which here ends the body alone. Netlink delivers these datagrams, of which each
// follows its length, a byte times four; then a dump is done.
void run(std::string_view datagrams, const std::function<void()> &body);

inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace fuzz
