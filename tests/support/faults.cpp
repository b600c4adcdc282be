#include "faults.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "calls.h"

namespace {

struct {
  std::string calls = "none";
  std::string seen;
  int error = 0;
  int remaining = 0;
} armed;

size_t max_read = SIZE_MAX;
std::set<uintptr_t> live;
size_t newest = 0;

// Upside down, so that a leak checker does not take it for a pointer.
uintptr_t hidden(void *block) { return ~reinterpret_cast<uintptr_t>(block); }

}  // namespace

void test::fail(const std::string &calls, int nth, int error) { armed = {calls, "", error, nth}; }

bool test::strikes(const std::string &call) {
  const bool is_meant = armed.calls.empty() || (" " + armed.calls + " ").find(" " + call + " ") != std::string::npos;
  if (!is_meant) return false;
  armed.seen += call + " ";
  if (--armed.remaining != 0) return false;
  errno = armed.error;
  return true;
}

std::string test::calls_seen() { return armed.seen; }
int test::failed_result() { return armed.error != 0 ? -1 : 0; }
long test::live_blocks() { return static_cast<long>(live.size()); }
size_t test::newest_size() { return newest; }
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

void *test_realloc(void *block, size_t size) {
  const uintptr_t old = hidden(block);
  newest = size;
  void *made = strikes("allocation") ? nullptr : realloc(block, size);
  if (made == nullptr) return nullptr;
  live.erase(old);
  live.insert(hidden(made));
  return made;
}
void *test_malloc(size_t size) { return test_realloc(nullptr, size); }
void *test_calloc(size_t count, size_t size) {
  void *made = test_realloc(nullptr, count * size);
  return made == nullptr ? nullptr : std::memset(made, 0, count * size);
}

char *test_strndup(const char *text, size_t max) {
  const size_t length = strnlen(text, max);
  void *made = test_calloc(length + 1, 1);
  return static_cast<char *>(made == nullptr ? nullptr : std::memcpy(made, text, length));
}
char *test_strdup(const char *text) { return test_strndup(text, std::strlen(text)); }
void test::test_free(void *block) {
  live.erase(hidden(block));
  free(block);
}

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
  return strikes("mmap") ? MAP_FAILED : mmap64(hint, size, protection, flags, fd, offset);
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
