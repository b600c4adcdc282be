// The path of a named socket, as the kernel takes it.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

namespace devfacts {

class socket_address {
 public:
  // If the path and its NUL do not fit, the length is 0 and errno is set.
  explicit socket_address(const char *path) {
    const size_t count = std::strlen(path);
    if (count < sizeof name_.sun_path) {
      std::memcpy(name_.sun_path, path, count);
      length_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + count);
    } else {
      errno = ENAMETOOLONG;
    }
  }

  const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&name_); }

  // Of the family and the path, without its NUL.
  socklen_t length() const { return length_; }

 private:
  sockaddr_un name_{AF_UNIX, {}};
  socklen_t length_ = 0;
};

}  // namespace devfacts
