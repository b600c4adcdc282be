// Owners: each releases what it holds at the end of its scope.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace devfacts {

// Calls a plain function as the deleter of a unique_ptr, at no cost in size.
template <auto Release>
struct release_with {
  template <class T>
  void operator()(T *held) const {
    Release(held);
  }
};

template <class T>
using malloc_ptr = std::unique_ptr<T, release_with<std::free>>;
using unique_file = std::unique_ptr<FILE, release_with<std::fclose>>;

class unique_fd {
 public:
  unique_fd() = default;
  explicit unique_fd(int fd) : fd_(fd) {}
  unique_fd(unique_fd &&other) noexcept : fd_(other.release()) {}
  unique_fd &operator=(unique_fd &&other) noexcept {
    reset(other.release());
    return *this;
  }
  ~unique_fd() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() { return std::exchange(fd_, -1); }
  void reset(int fd = -1) {
    if (fd_ >= 0) close(fd_);
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

}  // namespace devfacts
