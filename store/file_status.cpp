#include "store/file_status.h"

#include <fcntl.h>
#include <sys/stat.h>

// fstat asks for the file's times too, which makes the kernel write new ones at the next change, however soon that
// comes.
devfacts::file_status devfacts::stat_file(int fd) {
#ifdef STATX_TYPE
  struct statx status;
  if (statx(fd, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_BLOCKS, &status) != 0) return {};
  return {status.stx_mode, status.stx_size, status.stx_blocks};
#else
  struct stat status;
  if (fstat(fd, &status) != 0) return {};
  return {status.st_mode, static_cast<uint64_t>(status.st_size), static_cast<uint64_t>(status.st_blocks)};
#endif
}
