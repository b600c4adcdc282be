#include "store/backing.h"

#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace devfacts;

namespace {

constexpr char partition[] = "Factory";
constexpr char fallback_folder[] = "/var/cfg";
constexpr char fallback_file[] = "/var/cfg/.eeprom";
constexpr uint32_t fallback_size = 65536;
constexpr mode_t fallback_mode = 0644;

bool is_folder(const char *path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

struct file_facts {
  uint32_t mode;
  uint64_t size, blocks;
};

// All zero where they can't be had. Asking for a file's times as well, as fstat does, makes the kernel write new ones
// at the next change, however soon that comes.
file_facts facts_of(int fd) {
#ifdef STATX_TYPE
  struct statx facts;
  if (statx(fd, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_BLOCKS, &facts) != 0) return {};
  return {facts.stx_mode, facts.stx_size, facts.stx_blocks};
#else
  struct stat facts;
  if (fstat(fd, &facts) != 0) return {};
  return {facts.st_mode, static_cast<uint64_t>(facts.st_size), static_cast<uint64_t>(facts.st_blocks)};
#endif
}

// What the file is already is not written again, so that looking for records costs no write.
unique_fd eeprom_fallback_open() {
  if (!is_folder(fallback_folder)) return {};
  unique_fd file{open(fallback_file, O_RDWR | O_CREAT | O_SYNC | O_CLOEXEC, fallback_mode)};
  if (!file) {
    std::perror("open() failed");
    return {};
  }
  const file_facts now = facts_of(file.get());
  if (now.size != fallback_size && ftruncate(file.get(), fallback_size) < 0) std::perror("ftruncate() failed");
  if ((now.mode & 07777) != fallback_mode && fchmod(file.get(), fallback_mode) < 0) std::perror("fchmod() failed");
  return file;
}

constexpr size_t list_size = 2048;

// The kernel's list of partitions as a text, as far as one read gives it.
bool read_list(char (&text)[list_size]) {
  const unique_fd file{open("/proc/mtd", O_RDONLY | O_CLOEXEC)};
  if (!file) return false;
  const ssize_t count = read(file.get(), text, sizeof text - 1);
  if (count <= 0) return false;
  text[count] = '\0';
  return true;
}

struct list_line {
  const char *device;
  const char *name;
};

// Cuts a line 'mtd0: 00010000 00010000 "name"' in place; the name's first and last character go, one of which is a
// quote.
bool split(char *line, list_line &fields) {
  fields.device = strsep(&line, " ");
  for (int skipped = 0; skipped < 2; ++skipped) strsep(&line, " ");  // size and erase size
  if (line == nullptr || std::strncmp(fields.device, "mtd", 3) != 0) return false;
  const size_t length = std::strlen(line);
  if (length == 0 || (line[0] != '"' && line[length - 1] != '"')) return false;
  line[length - 1] = '\0';
  fields.name = length > 1 ? line + 1 : line;
  return true;
}

int open_block_device(const char *device) {
  char path[2048];
  std::snprintf(path, sizeof path, "/dev/mtdblock%d", static_cast<int>(std::strtol(device + 3, nullptr, 0)));
  return open(path, O_RDWR);
}

// Are there blocks of the file system behind all these bytes? One that does not know its holes says that the first is
// the file's end; then the number of blocks tells whether there can be any.
bool is_allocated(int fd, const file_facts &file, off_t offset, off_t count) {
  const off_t hole = lseek(fd, offset, SEEK_HOLE);
  if (hole < offset + count) return false;
  const auto end = static_cast<uint64_t>(hole);
  return end < file.size || file.blocks * 512 >= end;
}

// Only a definite lack of room refuses: where none can be reserved there may yet be enough.
bool reserve(int fd, off_t offset, off_t count) {
  int error = 0;
  do {
    error = posix_fallocate(fd, offset, count);
  } while (error == EINTR);
  return error != ENOSPC && error != EDQUOT;
}

// The whole pages are read, as a mapping does.
bool is_readable(int fd, off_t offset, off_t count) {
  char page[4096];
  for (const off_t end = offset + count; offset < end; offset += sizeof page) {
    const auto wanted = std::min<off_t>(sizeof page, end - offset);
    if (pread(fd, page, sizeof page, offset) < wanted) return false;
  }
  return true;
}

}  // namespace

int mtd_block_find(const char *name) {
  char text[list_size];
  if (!read_list(text)) return -1;
  char *lines = text;
  strsep(&lines, "\n");  // the heading
  while (char *line = strsep(&lines, "\n")) {
    list_line fields;
    if (*line == '\0') continue;
    if (!split(line, fields)) return -1;
    if (std::strcmp(fields.name, name) == 0) return open_block_device(fields.device);
  }
  return -1;
}

unique_fd devfacts::open_store() {
  unique_fd device{mtd_block_find(partition)};
  return device ? std::move(device) : eeprom_fallback_open();
}

bool devfacts::has_room(int fd, off_t offset, off_t count) {
  if (lseek(fd, 0, SEEK_END) < offset + count) return false;
  const file_facts file = facts_of(fd);
  const bool may_be_sparse = file.mode == 0 || S_ISREG(file.mode);
  const bool is_sparse = may_be_sparse && !is_allocated(fd, file, offset, count);
  if (is_sparse && !reserve(fd, offset, count)) return false;
  return is_readable(fd, offset, count);
}
