#include "store/mapped_range.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "store/file_status.h"

using namespace devfacts;

namespace {

// A file system that does not know its holes reports the first one at the file's end. Then the number of blocks shows
// whether there can be any.
bool is_allocated(int fd, const file_status &file, uint32_t offset, uint32_t count) {
  const off_t hole = lseek(fd, offset, SEEK_HOLE);
  if (hole < off_t{offset + count}) return false;
  const auto end = static_cast<uint64_t>(hole);
  return end < file.size || file.blocks * 512 >= end;
}

// Only a definite lack of space refuses: if a file system can't reserve blocks there may yet be enough.
bool allocate(int fd, uint32_t offset, uint32_t count) {
  int error = 0;
  do {
    error = posix_fallocate(fd, offset, count);
  } while (error == EINTR);
  return error != ENOSPC && error != EDQUOT;
}

}  // namespace

bool devfacts::reserve_range(int fd, uint32_t offset, uint32_t count) {
  if (lseek(fd, 0, SEEK_END) < off_t{offset + count}) return false;
  const file_status file = stat_file(fd);
  const bool may_be_sparse = file.mode == 0 || S_ISREG(file.mode);
  return !may_be_sparse || is_allocated(fd, file, offset, count) || allocate(fd, offset, count);
}

bool devfacts::is_readable(int fd, uint32_t offset, uint32_t count) {
  char page[4096];
  for (const uint32_t end = offset + count; offset < end; offset += sizeof page) {
    const auto wanted = std::min<uint32_t>(sizeof page, end - offset);
    if (pread(fd, page, sizeof page, offset) < static_cast<ssize_t>(wanted)) return false;
  }
  return true;
}
