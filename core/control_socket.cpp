#include <devfacts/core.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int closed = -1;
constinit int control_socket = closed;

}  // namespace

int ioctl_socket() {
  if (control_socket != closed) return control_socket;
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  if (fd < 0) die("cannot create socket, %s\n", std::strerror(errno));
  return control_socket = fd;
}

void ioctl_close() {
  if (control_socket == closed) return;
  close(control_socket);
  control_socket = closed;
}
