// Datagrams: a message lies inside its datagram, and comes to the callback as it was found there.
#include <devfacts/transport.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "input.h"

static std::string seen;

static int note(const void *payload, uint32_t length) {
  seen.assign(static_cast<const char *>(payload), length);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  static int ends[2] = {-1, -1};
  if (ends[0] < 0) fuzz::require(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) == 0);
  const auto cut = static_cast<uint32_t>(std::min<size_t>(count, 1600));
  uint32_t length = 0;
  const void *payload = socket_input_extract(bytes, cut, &length);
  fuzz::require((payload == nullptr) == (length == 0) && (payload == nullptr || payload == bytes + 4));
  fuzz::require(length == 0 || length + 4 <= cut);
  fd_set set;
  FD_ZERO(&set);
  FD_SET(ends[0], &set);
  seen.clear();
  if (send(ends[1], bytes, count, MSG_DONTWAIT) < 0) return 0;
  fuzz::require(socket_read(ends[0], &set, note) == 0);
  fuzz::require(seen == fuzz::view(bytes, cut).substr(payload == nullptr ? cut : 4, length));
  return 0;
}
