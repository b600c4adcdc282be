#include "input.h"

#include <linux/netlink.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>

using fuzz::string_view;

namespace {

string_view files, datagrams;
int flash = -1, netlink = -1;
std::jmp_buf end_of_body;

int file_with(string_view contents) {
  const int fd = memfd_create("input", MFD_CLOEXEC);
  fuzz::require(write(fd, contents.data(), contents.size()) == static_cast<ssize_t>(contents.size()));
  lseek(fd, 0, SEEK_SET);
  return fd;
}

}  // namespace

void fuzz::set_files(string_view contents) { files = contents; }

void fuzz::set_flash(string_view contents) {
  if (flash >= 0) close(flash);
  flash = file_with(contents);
  files = "dev: size\nmtd0: 00010000 00010000 \"Factory\"\n";
}

void fuzz::set_datagrams(string_view input) { datagrams = input; }

void fuzz::run(const std::function<void()> &body) {
  if (setjmp(end_of_body) == 0) body();
  if (netlink >= 0) close(netlink);
  netlink = -1;
}

// The library's undefined name x is test_x here.
extern "C" {

int test_open64(const char *path, int /*flags*/, ...) {
  if (std::strncmp(path, "/dev/", 5) != 0) return file_with(files);
  lseek(flash, 0, SEEK_SET);
  return flash < 0 ? -1 : dup(flash);
}

FILE *test_fopen64(const char *path, const char *mode) { return fdopen(test_open64(path, 0), mode); }

void test_exit(int /*status*/) { std::longjmp(end_of_body, 1); }

int test_socket(int /*domain*/, int /*type*/, int /*protocol*/) { return netlink = file_with(""); }

int test_setsockopt(int, int, int, const void *, socklen_t) { return 0; }

int test_bind(int, const sockaddr *, socklen_t) { return 0; }

int test_getsockname(int, sockaddr *, socklen_t *) { return 0; }

int test_close(int fd) {
  if (fd == netlink) netlink = -1;
  return close(fd);
}

ssize_t test_send(int, const void *, size_t size, int) { return static_cast<ssize_t>(size); }

ssize_t test_recvmsg(int, msghdr *message, int) {
  const nlmsghdr done = {sizeof done, NLMSG_DONE, 0, 0, 0};
  string_view datagram(reinterpret_cast<const char *>(&done), sizeof done);
  if (!datagrams.empty()) {
    const size_t length = size_t{4} * static_cast<uint8_t>(datagrams.front());
    datagram = datagrams.substr(1, length);
    datagrams.remove_prefix(1 + datagram.size());
  }
  message->msg_flags = 0;
  return static_cast<ssize_t>(
      datagram.copy(static_cast<char *>(message->msg_iov->iov_base), message->msg_iov->iov_len));
}
}
