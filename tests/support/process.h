// Processes of their own, the device that a case runs on, and what is seen there as text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

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

// How a process ended: what it wrote, and its exit status, or 128 and the signal's number.
struct ending {
  std::string out;
  std::string err;
  int status = 0;
  bool operator==(const ending &) const = default;
};
void PrintTo(const ending &end, std::ostream *stream);

// Runs the body in a child, because the library keeps state as long as its process lives. The child ends within a
// minute. An expectation that fails in the body makes the status 99; its text is in out.
ending run(const std::function<void()> &body);

// The same on a device of its own: the root directory holds only the files that the body writes.
ending run_on_device(const std::function<void()> &body);

// The usual case: the body runs on a device, writes this and succeeds.
void on_device(const std::function<void()> &body, const std::string &out = "", const std::string &err = "");

// Ends a body at once: without /proc the leak checker cannot look. The cases count the library's blocks themselves.
[[noreturn]] void leave();

// A timer interrupts every call that waits, again and again.
void interrupt_every(int microseconds);

// Leaves one free descriptor that fits into an fd_set; all others are beyond it.
void use_up_descriptors();

// Files: one that replaces whatever has its path; the contents of one, whose relative name is that of a file in
// tests/data; all below a directory, each with its path as seen from there.
void write_file(const std::string &path, const std::string &text);
std::string read_file(const std::string &path);
std::map<std::string, std::string> files_below(const std::string &directory);

}  // namespace test
