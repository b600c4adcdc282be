// Requests about one interface that go through the control socket.
#pragma once

#include <devfacts/core.h>
#include <sys/ioctl.h>

#include <cstring>

namespace devfacts {

constexpr size_t request_name_size = 16;  // IFNAMSIZ; not included, as <net/if.h> and <linux/if.h> conflict

// A cleared request, a struct ifreq or iwreq, with the name in its first bytes. A longer name is cut, without a NUL
// then.
template <class Request>
Request make_request(const char *name) {
  Request request;
  std::memset(&request, 0, sizeof request);
  std::memcpy(&request, name, strnlen(name, request_name_size));
  return request;
}

template <class Request>
bool send_request(unsigned long number, Request &request) {
  return ioctl(ioctl_socket(), number, &request) >= 0;
}

}  // namespace devfacts
