#include "net/parent.h"

#include <devfacts/core.h>
#include <fcntl.h>
#include <net/if.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "core/owner.h"

#define SYSCTL_NET "/proc/sys/net"

namespace devfacts {
namespace {

// The kernel's record of one name in a listing; padding follows the name's NUL.
struct directory_record {
  uint64_t inode;
  int64_t offset;
  uint16_t size;
  uint8_t type;
  char name[1];
};
static_assert(offsetof(directory_record, name) == 19);

// The path of such a name may lead elsewhere than to a folder of that name. No kernel has one.
bool is_path(const char *name) {
  return *name == '\0' || std::strlen(name) >= IF_NAMESIZE || std::strchr(name, '/') != nullptr;
}

}  // namespace

void find_parent(ifi_entry *entry) {
  char parent[IF_NAMESIZE + 1];
  if (iw_parent_name(entry->name, parent, sizeof parent) != 0) return;
  entry->master = static_cast<int32_t>(if_nametoindex(parent));
}

void parent_finder::add(ifi_entry *entry) {
  if (first_ == nullptr) {
    first_ = entry;
    return;
  }
  if (!asked_) {
    list_folders();
    find(first_);
  }
  find(entry);
}

void parent_finder::finish() {
  if (first_ != nullptr && !asked_) find_parent(first_);
}

// Read from the kernel directly: the C library's way costs a block of 32 KiB.
void parent_finder::list_folders() {
  asked_ = true;
  const unique_fd folder{open(SYSCTL_NET, O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  long size = 0;
  while ((size = syscall(SYS_getdents64, folder.get(), list_ + size_, sizeof list_ - size_)) > 0) {
    size_ += static_cast<size_t>(size);
  }
  complete_ = size == 0;
}

bool parent_finder::is_listed(const char *name) const {
  for (const char *at = list_; at < list_ + size_;) {
    const auto *record = reinterpret_cast<const directory_record *>(at);
    if (std::strcmp(record->name, name) == 0) return true;
    at += record->size;
  }
  return false;
}

void parent_finder::find(ifi_entry *entry) const {
  const char *name = entry->name;
  if (name != nullptr && (!complete_ || is_path(name) || is_listed(name))) find_parent(entry);
}

}  // namespace devfacts

int iw_parent_name(const char *name, char *buffer, int size) {
  if (name == nullptr) return -1;
  char path[128];
  std::snprintf(path, sizeof path, SYSCTL_NET "/%s/%%parent", name);
  devfacts::unique_fd fd{open(path, O_RDONLY | O_CLOEXEC)};
  if (!fd) return -1;
  const devfacts::unique_file file{fdopen(fd.get(), "r")};
  if (!file) return -1;
  static_cast<void>(fd.release());
  if (std::fgets(buffer, size, file.get()) == nullptr) return -1;
  trimr_string(buffer);
  return 0;
}
