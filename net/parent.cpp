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

// The kernel's record of one name in a listing; the name ends with a NUL and has padding behind it.
struct directory_record {
  uint64_t inode;
  int64_t offset;
  uint16_t size;
  uint8_t type;
  char name[1];
};
static_assert(offsetof(directory_record, name) == 19);

// No kernel gives such a name, and it stands for a path that the folders do not tell of.
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
  if (!listed_) {
    list_folders();
    find(first_);
  }
  find(entry);
}

void parent_finder::finish() {
  if (first_ != nullptr && !listed_) find_parent(first_);
}

void parent_finder::find(ifi_entry *entry) const {
  const char *name = entry->name;
  if (name != nullptr && (is_path(name) || folders_.may_hold(text_key(name)))) find_parent(entry);
}

// Read from the kernel directly: the C library's way costs a block of 32 KiB. Where it fails every name is tried.
void parent_finder::list_folders() {
  listed_ = true;
  const unique_fd folder{open(SYSCTL_NET, O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  alignas(directory_record) char buffer[1024];
  long size = 0;
  while ((size = syscall(SYS_getdents64, folder.get(), buffer, sizeof buffer)) > 0) {
    for (const char *at = buffer; at < buffer + size;) {
      const auto *record = reinterpret_cast<const directory_record *>(at);
      folders_.add(text_key(record->name));
      at += record->size;
    }
  }
  if (size < 0) folders_.add_all();
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
