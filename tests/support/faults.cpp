#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

#include "test.h"

static struct {
  std::string calls = "none", seen;
  int error = 0;
  long left = 0;
} armed;

static std::set<uintptr_t> live;
static size_t newest = 0;
static std::vector<std::string> canned;
static std::function<int(unsigned long, void *)> driver;
static std::function<void(void *, size_t)> mapped;
static struct {
  off_t place = -1;
  bool cuts = false;
} bad;
static size_t most_read = SIZE_MAX;

// Upside down, so that a leak checker does not take it for a pointer.
static uintptr_t hidden(void *block) { return ~reinterpret_cast<uintptr_t>(block); }

static void *resized(void *block, size_t size) {
  const uintptr_t old = hidden(block);
  void *made = test::strikes("allocation") ? nullptr : realloc(block, size);
  if (made != nullptr) live.erase(old), live.insert(hidden(made));
  newest = size;
  return made;
}

using test::strikes;

// What a failing call gives.
template <class Result>
static Result given() {
  if constexpr (std::is_pointer_v<Result>) return nullptr;
  if constexpr (std::is_integral_v<Result>) return armed.error != 0 ? -1 : 0;
}

// The library's undefined name x is test_x here.
extern "C" {

void *test_malloc(size_t size) { return resized(nullptr, size); }

void *test_calloc(size_t count, size_t size) {
  void *made = resized(nullptr, count * size);
  return made == nullptr ? nullptr : std::memset(made, 0, count * size);
}

void *test_realloc(void *block, size_t size) { return resized(block, size); }

char *test_strndup(const char *text, size_t most) {
  const size_t length = strnlen(text, most);
  void *made = test_calloc(length + 1, 1);
  return static_cast<char *>(made == nullptr ? nullptr : std::memcpy(made, text, length));
}

char *test_strdup(const char *text) { return test_strndup(text, std::strlen(text)); }

void test_free(void *block) {
  live.erase(hidden(block));
  free(block);
}

#define FAULTY(result, call, parameters, ...) \
  result test_##call parameters { return strikes(#call) ? given<result>() : call(__VA_ARGS__); }
int test_socket(int domain, int type, int protocol) {
  return strikes((type & SOCK_CLOEXEC) != 0 ? "socket" : "socket_inherited") ? -1 : socket(domain, type, protocol);
}
int test_access(const char *path, int mode) {
  return strikes(mode == R_OK ? "access" : "access_otherwise") ? -1 : access(path, mode);
}
FAULTY(int, setsockopt, (int fd, int level, int option, const void *value, socklen_t size), fd, level, option, value,
       size)
FAULTY(int, connect, (int fd, const sockaddr *address, socklen_t size), fd, address, size)
FAULTY(ssize_t, recv, (int fd, void *bytes, size_t size, int flags), fd, bytes, size, flags)
FAULTY(int, fcntl64, (int fd, int command, int flags), fd, command, flags)
FAULTY(int, poll, (pollfd * slots, nfds_t count, int limit), slots, count, limit)
FAULTY(int, select, (int count, fd_set *in, fd_set *out, fd_set *other, timeval *limit), count, in, out, other, limit)
FAULTY(int, unlink, (const char *path), path)
FAULTY(int, shutdown, (int fd, int how), fd, how)
FAULTY(FILE *, fdopen, (int fd, const char *mode), fd, mode)
FAULTY(char *, fgets, (char *line, int size, FILE *file), line, size, file)
FAULTY(char *, fgets_unlocked, (char *line, int size, FILE *file), line, size, file)
FAULTY(int, bind, (int fd, const sockaddr *address, socklen_t size), fd, address, size)
FAULTY(ssize_t, send, (int fd, const void *bytes, size_t size, int flags), fd, bytes, size, flags)
FAULTY(int, fchmod, (int fd, mode_t mode), fd, mode)
FAULTY(int, msync, (void *bytes, size_t size, int flags), bytes, size, flags)
FAULTY(int, munmap, (void *bytes, size_t size), bytes, size)
#define FAULTY64(result, call, parameters, ...) \
  result test_##call##64 parameters { return strikes(#call) ? -1 : call(__VA_ARGS__); }
FAULTY64(off_t, lseek, (int fd, off_t offset, int from), fd, offset, from)
FAULTY64(int, stat, (const char *path, struct stat *status), path, status)
FAULTY(int, statx, (int at, const char *path, int flags, unsigned mask, struct statx *facts), at, path, flags, mask,
       facts)
FAULTY64(int, ftruncate, (int fd, off_t size), fd, size)

int test_fstat64(int fd, struct stat *status) {
  const int result = strikes("fstat") ? -1 : fstat(fd, status);
  if (most_read != SIZE_MAX) status->st_size = 0;
  return result;
}

int test_posix_fallocate64(int fd, off_t offset, off_t size) {
  return strikes("posix_fallocate") ? armed.error : posix_fallocate(fd, offset, size);
}

ssize_t test_pread64(int fd, void *bytes, size_t size, off_t offset) {
  if (strikes("pread")) return given<ssize_t>();
  const bool is_hit = bad.place >= 0 && offset + static_cast<off_t>(size) > bad.place;
  if (!is_hit) return pread(fd, bytes, size, offset);
  if (bad.cuts && offset < bad.place) return pread(fd, bytes, static_cast<size_t>(bad.place - offset), offset);
  return errno = EIO, -1;
}

ssize_t test_read(int fd, void *bytes, size_t size) {
  if (strikes("read")) return given<ssize_t>();
  if (bad.place < 0) return read(fd, bytes, std::min(size, most_read));
  const ssize_t count = test_pread64(fd, bytes, size, lseek(fd, 0, SEEK_CUR));
  if (count > 0) lseek(fd, count, SEEK_CUR);
  return count;
}

void *test_mmap64(void *place, size_t size, int protection, int flags, int fd, off_t offset) {
  void *made = strikes("mmap") ? MAP_FAILED : mmap(place, size, protection, flags, fd, offset);
  if (mapped && made != MAP_FAILED) mapped(made, size);
  return made;
}
FAULTY(long, syscall, (long number, int fd, void *bytes, size_t size), number, fd, bytes, size)

int test_getsockname(int fd, sockaddr *address, socklen_t *size) {
  if (!strikes("getsockname")) return getsockname(fd, address, size);
  *size = 0;
  return given<int>();
}

ssize_t test_recvmsg(int fd, msghdr *message, int flags) {
  if (strikes("recvmsg")) return given<ssize_t>();
  if (canned.empty()) return recvmsg(fd, message, flags);
  const std::string datagram = canned.front();
  canned.erase(canned.begin());
  message->msg_flags = datagram.size() > message->msg_iov->iov_len ? MSG_TRUNC : 0;
  return static_cast<ssize_t>(
      datagram.copy(static_cast<char *>(message->msg_iov->iov_base), message->msg_iov->iov_len));
}

int test_ioctl(int fd, unsigned long number, void *record) {
  if (strikes("ioctl")) return -1;
  return driver ? driver(number, record) : ioctl(fd, number, record);
}

FILE *test_fopen64(const char *path, const char *mode) {
  return strikes(std::strchr(mode, 'e') != nullptr ? "fopen" : "fopen_inherited") ? nullptr : fopen(path, mode);
}

void test_exit(int status) { std::fflush(nullptr), _exit(status); }

int test_open64(const char *path, int flags, mode_t mode) {
  return strikes((flags & O_CLOEXEC) != 0 ? "open" : "open_inherited") ? -1 : open(path, flags, mode);
}
}

void test::fail(const std::string &calls, int nth, int error) { armed = {" " + calls + " ", "", error, nth}; }

bool test::strikes(const char *call) {
  const std::string name = call + std::string(" ");
  if (armed.calls != "  " && armed.calls.find(" " + name) == armed.calls.npos) return false;
  armed.seen += name;
  if (--armed.left != 0) return false;
  errno = armed.error;
  return true;
}

std::string test::calls_seen() { return armed.seen; }

long test::live_blocks() { return static_cast<long>(live.size()); }

size_t test::newest_size() { return newest; }

void test::drive(const std::function<int(unsigned long, void *)> &answer) { driver = answer; }

void test::on_mapping(const std::function<void(void *, size_t)> &look) { mapped = look; }

void test::break_store(off_t place, bool cuts) { bad = {place, cuts}; }

void test::read_at_most(size_t count) { most_read = count; }

void test::receive_instead(const std::vector<std::string> &datagrams) { canned = datagrams; }
