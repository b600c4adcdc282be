#include "store/backing.h"

#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "store/file_status.h"

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

// Moves a descriptor that took the place of a closed standard stream, so that no message is written into the records.
int above_standard_streams(int fd) {
  if (fd < 0 || fd > STDERR_FILENO) return fd;
  const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(fd);
  return moved;
}

// A file that already has its size and mode is not changed, so that reading records writes nothing.
unique_fd eeprom_fallback_open() {
  if (!is_folder(fallback_folder)) return {};
  unique_fd file{above_standard_streams(open(fallback_file, O_RDWR | O_CREAT | O_SYNC | O_CLOEXEC, fallback_mode))};
  if (!file) {
    std::perror("open() failed");
    return {};
  }
  const file_status now = stat_file(file.get());
  if (now.size != fallback_size && ftruncate(file.get(), fallback_size) < 0) std::perror("ftruncate() failed");
  if ((now.mode & 07777) != fallback_mode && fchmod(file.get(), fallback_mode) < 0) std::perror("fchmod() failed");
  return file;
}

}  // namespace

unique_fd devfacts::open_store() {
  unique_fd device{above_standard_streams(mtd_block_find(partition))};
  return device ? std::move(device) : eeprom_fallback_open();
}
