// The datagram, as it lies in memory and on its way.
#pragma once

#include <cstdint>

namespace devfacts {

struct socket_container {
  uint32_t length;  // of the payload, which stands behind it, in host order; never 0
};
static_assert(sizeof(socket_container) == 4);

}  // namespace devfacts
