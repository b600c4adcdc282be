// The datagram, in memory as on its way.
#pragma once

#include <cstdint>

namespace devfacts {

struct socket_container {
  uint32_t length;  // of the payload after it, in host order; never 0
};
static_assert(sizeof(socket_container) == 4);

}  // namespace devfacts
