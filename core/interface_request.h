// Requests about one interface that go through the control socket.
#pragma once

#include <devfacts/core.h>
#include <sys/ioctl.h>

#include <cstddef>

namespace devfacts {

// Clears a request, a struct ifreq or iwreq, and puts the name into its first bytes. A longer name is cut, without a
// NUL then.
void prepare_request(void *request, size_t size, const char *name);

template <class Request>
Request make_request(const char *name) {
  Request request;
  prepare_request(&request, sizeof request, name);
  return request;
}

template <class Request>
bool send_request(unsigned long number, Request &request) {
  return ioctl(ioctl_socket(), number, &request) >= 0;
}

}  // namespace devfacts
