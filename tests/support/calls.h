// The library's calls of the system that come to the tests. One that is in the list fails when it is its turn, and is
// passed on otherwise: its result and name, what it is called in fault lists, its parameters and arguments. CMake reads
// this, too.
// clang-format off
#define CALLS(CALL) \
  CALL(int, access, mode == R_OK ? "access" : "access_otherwise", (const char *path, int mode), (path, mode)) \
  CALL(int, bind, "bind", (int fd, const sockaddr *address, socklen_t size), (fd, address, size)) \
  CALL(int, connect, "connect", (int fd, const sockaddr *address, socklen_t size), (fd, address, size)) \
  CALL(int, fchmod, "fchmod", (int fd, mode_t mode), (fd, mode)) \
  CALL(int, fcntl64, "fcntl", (int fd, int command, int flags), (fd, command, flags)) \
  CALL(FILE *, fdopen, "fdopen", (int fd, const char *mode), (fd, mode)) \
  CALL(char *, fgets, "fgets", (char *line, int size, FILE *file), (line, size, file)) \
  CALL(char *, fgets_unlocked, "fgets", (char *line, int size, FILE *file), (line, size, file)) \
  CALL(FILE *, fopen64, inherited(std::strchr(mode, 'e'), "fopen"), (const char *path, const char *mode), (path, mode)) \
  CALL(int, ftruncate64, "ftruncate", (int fd, off64_t size), (fd, size)) \
  CALL(off64_t, lseek64, "lseek", (int fd, off64_t offset, int whence), (fd, offset, whence)) \
  CALL(int, msync, "msync", (void *bytes, size_t size, int flags), (bytes, size, flags)) \
  CALL(int, munmap, "munmap", (void *bytes, size_t size), (bytes, size)) \
  CALL(int, open64, inherited(flags & O_CLOEXEC, "open"), (const char *path, int flags, mode_t mode), (path, flags, mode)) \
  CALL(int, poll, "poll", (pollfd *slots, nfds_t count, int timeout), (slots, count, timeout)) \
  CALL(ssize_t, pread64, "pread", (int fd, void *bytes, size_t size, off64_t offset), (fd, bytes, size, offset)) \
  CALL(ssize_t, recv, "recv", (int fd, void *bytes, size_t size, int flags), (fd, bytes, size, flags)) \
  CALL(int, select, "select", (int n, fd_set *in, fd_set *out, fd_set *bad, timeval *wait), (n, in, out, bad, wait)) \
  CALL(ssize_t, send, "send", (int fd, const void *bytes, size_t size, int flags), (fd, bytes, size, flags)) \
  CALL(int, setsockopt, "setsockopt", (int fd, int level, int name, const void *value, socklen_t size), (fd, level, name, value, size)) \
  CALL(int, shutdown, "shutdown", (int fd, int how), (fd, how)) \
  CALL(int, socket, inherited(type & SOCK_CLOEXEC, "socket"), (int domain, int type, int protocol), (domain, type, protocol)) \
  CALL(int, stat64, "stat", (const char *path, struct stat64 *status), (path, status)) \
  CALL(int, statx, "statx", (int at, const char *path, int flags, unsigned mask, struct statx *to), (at, path, flags, mask, to)) \
  CALL(long, syscall, "syscall", (long number, int fd, void *bytes, size_t size), (number, fd, bytes, size)) \
  CALL(int, unlink, "unlink", (const char *path), (path))
// Each of these has a function of its own:
// SPECIAL(calloc) SPECIAL(exit) SPECIAL(free) SPECIAL(fstat64) SPECIAL(getsockname) SPECIAL(ioctl) SPECIAL(malloc)
// SPECIAL(mmap64) SPECIAL(posix_fallocate64) SPECIAL(read) SPECIAL(realloc) SPECIAL(recvmsg)
// SPECIAL(strdup) SPECIAL(strndup)
