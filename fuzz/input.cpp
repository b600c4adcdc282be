#include "input.h"

#include <linux/netlink.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csetjmp>

static std::string_view waiting;
static std::jmp_buf end_of_body;

std::string fuzz::file_with(std::string_view contents) {
  static int fd = -1;
  if (fd >= 0) close(fd);
  fd = memfd_create("input", MFD_CLOEXEC);
  require(write(fd, contents.data(), contents.size()) == static_cast<ssize_t>(contents.size()));
  return "/proc/self/fd/" + std::to_string(fd);
}

void fuzz::run(std::string_view datagrams, const std::function<void()> &body) {
  waiting = datagrams;
  const int socket = dup(STDERR_FILENO);  // the number that the body's socket will have
  close(socket);
  if (setjmp(end_of_body) == 0) body();
  close(socket);
}

// The library's call of NAME is test_NAME.
extern "C" {
void test_exit(int /*status*/) { std::longjmp(end_of_body, 1); }

ssize_t test_send(int /*fd*/, const void * /*bytes*/, size_t size, int /*flags*/) { return static_cast<ssize_t>(size); }

ssize_t test_recvmsg(int /*fd*/, msghdr *message, int /*flags*/) {
  const nlmsghdr done{sizeof done, NLMSG_DONE, 0, 0, 0};
  std::string_view datagram(reinterpret_cast<const char *>(&done), sizeof done);
  if (!waiting.empty()) {
    const size_t length = size_t{4} * static_cast<uint8_t>(waiting.front());
    datagram = waiting.substr(1, length);
    waiting.remove_prefix(1 + datagram.size());
  }
  const iovec &buffer = *message->msg_iov;
  message->msg_flags = 0;
  return static_cast<ssize_t>(datagram.copy(static_cast<char *>(buffer.iov_base), buffer.iov_len));
}
}
