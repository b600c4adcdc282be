// The bounded writer for bytes that outlive the process: it never writes beyond its buffer. It skips bytes that are
// already equal, so that unchanged pages of a mapped file stay clean.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>

namespace devfacts {

class byte_writer {
 public:
  explicit byte_writer(std::span<std::byte> buffer) : rest_(buffer) {}

  // The record with the bytes that it has in memory.
  template <class T>
  void write(const T &record) {
    static_assert(std::is_trivially_copyable_v<T>);
    write(&record, sizeof record);
  }

  void write(const void *bytes, std::size_t count) {
    const auto *from = static_cast<const std::byte *>(bytes);
    const auto piece = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(piece.size());
    if (std::memcmp(piece.data(), from, piece.size()) == 0) return;
    for (std::byte &to : piece) {
      if (to != *from) to = *from;
      ++from;
    }
  }

 private:
  std::span<std::byte> rest_;
};

}  // namespace devfacts
