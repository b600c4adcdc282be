#include "faults.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "calls.h"

namespace {

struct {
  std::string calls = "none";
  std::string seen;
  int error = 0;
  int remaining = 0;
} armed;

std::function<void(void *, size_t)> mapping_seen;
size_t max_read = SIZE_MAX;

}  // namespace

void test::fail(const std::string &calls, int nth, int error) { armed = {calls, "", error, nth}; }

bool test::strikes(const std::string &call) {
  const std::string name = call + " ";
  if (!armed.calls.empty() && (armed.calls + " ").find(name) == std::string::npos) return false;
  armed.seen += name;
  if (--armed.remaining != 0) return false;
  errno = armed.error;
  return true;
}

std::string test::calls_seen() { return armed.seen; }
int test::failed_result() { return armed.error != 0 ? -1 : 0; }
void test::on_mapping(const std::function<void(void *, size_t)> &look) { mapping_seen = look; }
void test::read_at_most(size_t count) { max_read = count; }

template <class Result>
static Result failure() {
  if constexpr (std::is_pointer_v<Result>) return nullptr;
  if constexpr (std::is_integral_v<Result>) return test::failed_result();
}

using test::strikes;

// A descriptor that programs started later inherit is told by its call's name.
static std::string inherited(bool is_closed_for_them, const std::string &call) {
  return is_closed_for_them ? call : call + "_inherited";
}

// The library's call of NAME is test_NAME.
extern "C" {
#define CALL(result, name, label, parameters, arguments) \
  result test_##name parameters { return strikes(label) ? failure<result>() : name arguments; }
CALLS(CALL)

int test_fstat64(int fd, struct stat64 *status) {
  const int result = strikes("fstat") ? -1 : fstat64(fd, status);
  if (max_read != SIZE_MAX) status->st_size = 0;
  return result;
}

int test_posix_fallocate64(int fd, off64_t offset, off64_t size) {
  return strikes("posix_fallocate") ? armed.error : posix_fallocate64(fd, offset, size);
}

ssize_t test_read(int fd, void *bytes, size_t size) {
  return strikes("read") ? test::failed_result() : read(fd, bytes, std::min(size, max_read));
}

void *test_mmap64(void *hint, size_t size, int protection, int flags, int fd, off64_t offset) {
  void *mapping = strikes("mmap") ? MAP_FAILED : mmap64(hint, size, protection, flags, fd, offset);
  if (mapping_seen && mapping != MAP_FAILED) mapping_seen(mapping, size);
  return mapping;
}

int test_getsockname(int fd, sockaddr *address, socklen_t *size) {
  if (!strikes("getsockname")) return getsockname(fd, address, size);
  *size = 0;
  return test::failed_result();
}

void test_exit(int status) {
  std::fflush(nullptr);
  _exit(status);
}
}
