// The sending end: one connection of the process.
#include <devfacts/transport.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "core/owner.h"
#include "platform/log.h"
#include "transport/address.h"
#include "transport/container.h"

using namespace devfacts;

namespace {

constexpr time_t wait_seconds = 2;

constexpr int closed = -1;
constinit int socket_output_fd = closed;

void socket_output_close() {
  if (socket_output_fd == closed) return;
  shutdown(socket_output_fd, SHUT_WR);
  close(socket_output_fd);
  socket_output_fd = closed;
}

malloc_ptr<socket_container> allocate_container(uint32_t size) {
  size_t total = 0;
  if (__builtin_add_overflow(sizeof(socket_container), size, &total)) return nullptr;
  return malloc_ptr<socket_container>{static_cast<socket_container *>(std::malloc(total))};
}

malloc_ptr<socket_container> make_container(const void *data, uint32_t size) {
  if (data == nullptr || size == 0) {
    log_message(1, "Wrong parameters\n");
    return nullptr;
  }
  malloc_ptr<socket_container> made = allocate_container(size);
  if (!made) {
    log_message(1, "Failed memory allocation\n");
    return nullptr;
  }
  made->length = size;
  std::memcpy(made.get() + 1, data, size);
  return made;
}

// Unlike set_nio() this may fail: sending then waits in the kernel.
void set_nonblock(int fd) {
  const int flags = fcntl(fd, F_GETFL);
  if (flags < 0) {
    std::perror("set_nonblock: can't fcntl(F_GETFL) socket");
  } else if (fcntl(fd, F_SETFL, flags | O_NONBLOCK) < 0) {
    std::perror("set_nonblock: can't fcntl(F_SETFL) socket");
  }
}

bool connect_to(const char *path) {
  unique_fd fd{socket(AF_UNIX, SOCK_DGRAM, 0)};
  if (!fd) return false;
  const socket_address address(path);
  if (address.length() == 0 || connect(fd.get(), address.get(), address.length() + 1) < 0) {
    std::perror("Socket write error");
    return false;
  }
  set_nonblock(fd.get());
  socket_output_fd = fd.release();
  return true;
}

// Wraps around: only differences count.
uint32_t milliseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint32_t>(now.tv_sec) * 1000 + static_cast<uint32_t>(now.tv_nsec) / 1000000;
}

// As with select, for a descriptor that a set can't hold.
bool poll_writable(int fd) {
  constexpr uint32_t timeout = wait_seconds * 1000;
  const uint32_t start = milliseconds();
  pollfd slot{fd, POLLOUT, 0};
  uint32_t passed = 0;
  int ready = 0;
  do {
    ready = poll(&slot, 1, static_cast<int>(timeout - passed));
    passed = std::min(milliseconds() - start, timeout);
  } while (ready < 0 && errno == EINTR);
  return ready > 0 && (slot.revents & (POLLOUT | POLLERR)) != 0;
}

bool select_writable(int fd) {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(fd, &set);
  timeval limit{wait_seconds, 0};  // an interrupted select leaves the remaining time in it
  int ready = 0;
  do {
    ready = select(fd + 1, nullptr, &set, nullptr, &limit);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

bool wait_writable(int fd) { return fd < FD_SETSIZE ? select_writable(fd) : poll_writable(fd); }

bool send_whole(const void *bytes, size_t size) {
  ssize_t sent = 0;
  do {
    sent = send(socket_output_fd, bytes, size, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  if (sent < 0 && errno != EAGAIN) socket_output_close();
  return sent == static_cast<ssize_t>(size);
}

}  // namespace

int socket_write(const void *data, uint32_t size, const char *path) {
  const malloc_ptr<socket_container> container = make_container(data, size);
  if (!container) {
    log_message(1, "Unable create data container for sending data to the socket\n");
    return -1;
  }
  if (socket_output_fd == closed && !connect_to(path)) return 0;
  if (wait_writable(socket_output_fd) && send_whole(container.get(), sizeof *container + size)) return 0;
  log_message(1, "Failed writing to socket\n");
  return -1;
}
