#include <alloca.h>
#include <devfacts/core.h>
#include <devfacts/net.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

static_assert(sizeof(sockaddr_nl) == 12 && sizeof(nlmsghdr) == 16 && sizeof(nlmsgerr) == 20);

namespace {

constexpr int socket_buffer_size = 32768;
constexpr int receive_pages = 4;

struct dump_request {
  nlmsghdr header;
  rtgenmsg body;
  uint8_t padding[3];
};
static_assert(sizeof(dump_request) == 20);

void set_socket_buffer(int fd, int option, const char *failure) {
  if (setsockopt(fd, SOL_SOCKET, option, &socket_buffer_size, sizeof socket_buffer_size) < 0) {
    die(failure, std::strerror(errno));
  }
}

[[noreturn]] void die_of_error_message(const nlmsghdr *message) {
  if (message->nlmsg_len < NLMSG_LENGTH(sizeof(nlmsgerr))) die("netlink error message truncated.\n");
  const auto error = static_cast<uint32_t>(static_cast<const nlmsgerr *>(NLMSG_DATA(message))->error);
  const int code = static_cast<int>(-error);  // unsigned, as the minimum has no negative
  if (code != 0) die("netlink error (%d), %s\n", code, std::strerror(code));
  die("netlink communication error ...\n");
}

enum class walk_end { dump_done, datagram_done };

// Hands the messages of a datagram to the callback. What remains of it is below zero if the last message's padding is
// beyond the end.
walk_end walk(char *position, int64_t &remaining, nl_callback callback) {
  while (remaining >= static_cast<int64_t>(sizeof(nlmsghdr))) {
    auto *message = reinterpret_cast<nlmsghdr *>(position);
    if (message->nlmsg_len < sizeof(nlmsghdr) || message->nlmsg_len > remaining) break;
    if (message->nlmsg_type == NLMSG_ERROR) die_of_error_message(message);
    if (message->nlmsg_type == NLMSG_DONE) return walk_end::dump_done;
    callback(message);
    // Read once more: the callback may have cut the message. In 64 bits no length can wrap the walk back to its start.
    const auto step = NLMSG_ALIGN(int64_t{message->nlmsg_len});
    remaining -= step;
    position += step;
  }
  return walk_end::datagram_done;
}

}  // namespace

void nl_open(nl_handle *handle, int protocol, uint32_t groups) {
  *handle = {};
  handle->fd = socket(AF_NETLINK, SOCK_RAW, protocol);
  if (handle->fd < 0) die("Failed to create netlink socket: %s\n", std::strerror(errno));
  set_socket_buffer(handle->fd, SO_SNDBUF, "can't change SO_SNDBUF, %s\n");
  set_socket_buffer(handle->fd, SO_RCVBUF, "can't change SO_RCVBUF, %s\n");

  handle->local.nl_family = AF_NETLINK;
  handle->local.nl_groups = groups;
  auto *address = reinterpret_cast<sockaddr *>(&handle->local);
  socklen_t length = sizeof handle->local;
  if (bind(handle->fd, address, length) != 0) die("Failed to bind netlink socket: %s\n", std::strerror(errno));
  if (getsockname(handle->fd, address, &length) < 0) die("can't getsockname(), %s\n", std::strerror(errno));
  if (length != sizeof handle->local || handle->local.nl_family != AF_NETLINK) die("whatever ...\n");
  handle->seq = static_cast<uint32_t>(std::time(nullptr));
}

int nl_send(nl_handle *handle, const void *buffer, size_t length) {
  ssize_t sent = 0;
  do {
    sent = send(handle->fd, buffer, length, 0);
  } while (sent < 0 && errno == EINTR);
  if (sent < 0) die("cannot send netlink request, %s\n", std::strerror(errno));
  return static_cast<int>(sent);
}

int nl_dump(nl_handle *handle, int type) {
  handle->dump = ++handle->seq;
  dump_request request{};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = static_cast<uint16_t>(type);
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.header.nlmsg_seq = handle->dump;
  request.header.nlmsg_pid = static_cast<uint32_t>(getpid());
  request.body.rtgen_family = AF_UNSPEC;
  return nl_send(handle, &request, sizeof request);
}

void nl_recv(nl_handle *handle, nl_callback callback) {
  const auto size = static_cast<size_t>(getpagesize()) * receive_pages;
  // On the stack although its size is known at run time only, so that a dump needs no heap.
  // cppcheck-suppress allocaCalled
  auto *buffer = static_cast<char *>(alloca(size));
  sockaddr_nl sender{};
  iovec piece{};
  msghdr envelope{};
  envelope.msg_name = &sender;
  envelope.msg_iov = &piece;
  envelope.msg_iovlen = 1;

  for (;;) {
    // The kernel leaves the length of the sender's own address here, which may be longer than our buffer for it.
    envelope.msg_namelen = sizeof sender;
    piece = {buffer, size};
    const ssize_t received = recvmsg(handle->fd, &envelope, 0);
    if (received < 0 && errno == EINTR) continue;
    if (received < 0 && errno == EAGAIN) return;
    if (received < 0) die("recvmsg() failed");
    if (received == 0) die("EOF on netlink, %s\n", std::strerror(errno));

    int64_t remaining = received;
    if (walk(buffer, remaining, callback) == walk_end::dump_done) return;
    if ((envelope.msg_flags & MSG_TRUNC) != 0) {
      std::fprintf(stderr, "truncated message ?\n");
    } else if (remaining != 0) {
      die("netlink packet remains %d bytes, not parsed.\n", static_cast<int>(remaining));
    }
  }
}

void nl_close(nl_handle *handle) {
  close(handle->fd);
  handle->fd = -1;
}
