#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "peers.h"

namespace {

constexpr size_t receive_size = 16384;

int open_socket() {
  const int fd = socket(AF_NETLINK, SOCK_RAW, NETLINK_ROUTE);
  constexpr int size = 32768;
  setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  sockaddr_nl local{};
  local.nl_family = AF_NETLINK;
  socklen_t length = sizeof local;
  if (bind(fd, reinterpret_cast<sockaddr *>(&local), length) != 0) std::abort();
  getsockname(fd, reinterpret_cast<sockaddr *>(&local), &length);
  return fd;
}

void request(int fd, uint16_t type) {
  struct {
    nlmsghdr header;
    rtgenmsg body;
  } dump{{20, type, NLM_F_REQUEST | NLM_F_DUMP, static_cast<uint32_t>(std::time(nullptr)), 0}, {AF_UNSPEC}};
  if (send(fd, &dump, sizeof dump, 0) != sizeof dump) std::abort();
}

// The headers are all that is read: there is no other way to know the end.
bool holds_the_end(const char *buffer, ssize_t received) {
  const auto *message = reinterpret_cast<const nlmsghdr *>(buffer);
  for (; NLMSG_OK(message, received); message = NLMSG_NEXT(message, received)) {
    if (message->nlmsg_type == NLMSG_DONE) return true;
  }
  return false;
}

void receive(int fd) {
  alignas(nlmsghdr) char buffer[receive_size];
  ssize_t received = 0;
  do {
    sockaddr_nl sender{};
    iovec piece{buffer, sizeof buffer};
    msghdr envelope{};
    envelope.msg_name = &sender;
    envelope.msg_namelen = sizeof sender;
    envelope.msg_iov = &piece;
    envelope.msg_iovlen = 1;
    received = recvmsg(fd, &envelope, 0);
    if (received <= 0) std::abort();
  } while (!holds_the_end(buffer, received));
}

}  // namespace

void bench::receive_only() {
  const int fd = open_socket();
  constexpr uint16_t types[] = {RTM_GETLINK, RTM_GETADDR};
  for (const uint16_t type : types) {
    request(fd, type);
    receive(fd);
  }
  close(fd);
}
