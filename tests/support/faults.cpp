#include "faults.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

struct {
  const char *call = "";
  int nth = 0;
  int error = 0;
  int seen = 0;
} armed;

long live = 0;
size_t newest = 0;
std::vector<std::string> canned;

template <class Allocate>
auto allocation(size_t size, Allocate allocate) {
  decltype(allocate()) block = test::strikes("allocation") ? nullptr : allocate();
  live += block != nullptr;
  newest = size;
  return block;
}

}  // namespace

using test::strikes;

// The library's undefined name x is test_x here.
extern "C" {

void *test_malloc(size_t size) {
  return allocation(size, [=] { return malloc(size); });
}

void *test_calloc(size_t count, size_t size) {
  return allocation(count * size, [=] { return calloc(count, size); });
}

void *test_realloc(void *block, size_t size) {
  if (strikes("realloc")) return nullptr;
  void *grown = allocation(size, [=] { return realloc(block, size); });
  live -= grown != nullptr && block != nullptr;
  return grown;
}

char *test_strndup(const char *text, size_t most) {
  return allocation(most, [=] { return strndup(text, most); });
}

void test_free(void *block) {
  live -= block != nullptr;
  free(block);
}

int test_socket(int domain, int type, int protocol) { return strikes("socket") ? -1 : socket(domain, type, protocol); }

int test_setsockopt(int fd, int level, int option, const void *value, socklen_t size) {
  return strikes("setsockopt") ? -1 : setsockopt(fd, level, option, value, size);
}

int test_bind(int fd, const sockaddr *address, socklen_t size) {
  return strikes("bind") ? -1 : bind(fd, address, size);
}

int test_getsockname(int fd, sockaddr *address, socklen_t *size) {
  if (!strikes("getsockname")) return getsockname(fd, address, size);
  *size = 0;
  return armed.error != 0 ? -1 : 0;
}

ssize_t test_send(int fd, const void *bytes, size_t size, int flags) {
  return strikes("send") ? -1 : send(fd, bytes, size, flags);
}

ssize_t test_recvmsg(int fd, msghdr *message, int flags) {
  if (strikes("recvmsg")) return -1;
  if (canned.empty()) return recvmsg(fd, message, flags);
  const std::string datagram = canned.front();
  canned.erase(canned.begin());
  message->msg_flags = 0;
  return static_cast<ssize_t>(
      datagram.copy(static_cast<char *>(message->msg_iov->iov_base), message->msg_iov->iov_len));
}

int test_open64(const char *path, int flags) { return strikes("open") ? -1 : open(path, flags); }

long test_syscall(long number, int fd, void *bytes, size_t size) {
  return strikes("syscall") ? -1 : syscall(number, fd, bytes, size);
}
}

namespace test {

void fail(const char *call, int nth, int error) { armed = {call, nth, error, 0}; }

bool strikes(const char *call) {
  if (std::strcmp(call, armed.call) != 0 || ++armed.seen != armed.nth) return false;
  errno = armed.error;
  return true;
}

int calls_seen() { return armed.seen; }

long live_blocks() { return live; }

size_t newest_size() { return newest; }

void receive_instead(const std::vector<std::string> &datagrams) { canned = datagrams; }

}  // namespace test
