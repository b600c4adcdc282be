// What a fuzz target passes to the library: bytes that replace every file that it opens and every datagram
// that it receives over netlink.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string_view>

namespace fuzz {

using std::string_view;

inline string_view view(const uint8_t *bytes, size_t count) { return {reinterpret_cast<const char *>(bytes), count}; }

// What every file holds from now on. A flash device keeps what is written to it, until the next call.
void set_files(string_view contents);
void set_flash(string_view contents);

// Before each datagram is its length, a byte times four.
void set_datagrams(string_view datagrams);

// Runs what may end the process, which here ends the body alone.
void run(const std::function<void()> &body);

inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace fuzz
