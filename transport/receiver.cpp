// The receiving end: a named socket, and the messages that wait at it.
#include <devfacts/transport.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <span>

#include "core/byte_reader.h"
#include "core/owner.h"
#include "platform/log.h"
#include "transport/address.h"
#include "transport/container.h"

using namespace devfacts;

namespace {

constexpr uint32_t receive_size = sizeof(socket_container) + SOCKET_PAYLOAD_MAX;

bool bind_to(int fd, const char *path) {
  const socket_address address(path);
  if (address.length() == 0) return false;
  unlink(path);
  return bind(fd, address.get(), address.length()) == 0;
}

bool is_in(int fd, const fd_set *set) { return fd >= 0 && fd < FD_SETSIZE && FD_ISSET(fd, set); }

}  // namespace

int socket_input_init(const char *path) {
  unique_fd fd{socket(AF_UNIX, SOCK_DGRAM, 0)};
  if (!fd) return -1;
  if (bind_to(fd.get(), path)) return fd.release();
  log_message_errno(1, "Cannot create '%s' UNIX socket.\n", path);
  return -1;
}

void socket_input_shutdown(int fd, const char *path) {
  if (fd < 0 || path == nullptr) return;
  unlink(path);
  close(fd);
}

int socket_input_read_single(int fd, void *buffer, uint32_t size) {
  ssize_t received = 0;
  do {
    received = recv(fd, buffer, size, MSG_DONTWAIT | MSG_NOSIGNAL);
  } while (received < 0 && errno == EINTR);
  if (received >= 0) return static_cast<int>(received);
  if (errno != EAGAIN) log_message_errno(4, "Failed recieving data from the socket\n");
  return 0;
}

const void *socket_input_extract(const void *buffer, uint32_t size, uint32_t *length_out) {
  *length_out = 0;
  if (buffer == nullptr) return nullptr;
  byte_reader datagram(buffer, size);
  socket_container head;
  std::span<const std::byte> payload;
  if (!datagram.read(head) || head.length == 0 || !datagram.take(head.length, payload)) return nullptr;
  *length_out = head.length;
  return payload.data();
}

int socket_read(int fd, const fd_set *read_set, socket_callback callback) {
  if (!is_in(fd, read_set)) return 0;
  alignas(socket_container) std::byte buffer[receive_size];
  int received = 0;
  while ((received = socket_input_read_single(fd, buffer, sizeof buffer)) > 0) {
    uint32_t length = 0;
    const void *payload = socket_input_extract(buffer, static_cast<uint32_t>(received), &length);
    if (payload != nullptr) {
      callback(payload, length);
    } else {
      log_message(2, "Corrupted input from socket!!!\n");
    }
  }
  return 0;
}
