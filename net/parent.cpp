#include "net/parent.h"

#include <devfacts/core.h>
#include <fcntl.h>
#include <net/if.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

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

int32_t index_of_parent(const char *name) {
  char parent[IF_NAMESIZE + 1];
  if (iw_parent_name(name, parent, sizeof parent) != 0) return 0;
  return static_cast<int32_t>(if_nametoindex(parent));
}

bool parent_finder::may_have_parent(const char *name) {
  if (name == nullptr) return false;
  if (is_path(name)) return true;
  if (state_ == opening) {
    sysctl_net_.reset(open(SYSCTL_NET, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    state_ = asking;
    return has_folder(name);
  }
  if (state_ == asking) list_folders();
  return folders_.may_hold(text_key(name));
}

// Only a clear no counts as one.
bool parent_finder::has_folder(const char *name) const {
  return faccessat(sysctl_net_.get(), name, F_OK, 0) == 0 || errno != ENOENT;
}

// Read from the kernel directly: the C library's way costs a block of 32 KiB. Where it fails every name is tried.
void parent_finder::list_folders() {
  state_ = listed;
  alignas(directory_record) char buffer[1024];
  long size = 0;
  while ((size = syscall(SYS_getdents64, sysctl_net_.get(), buffer, sizeof buffer)) > 0) {
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
  const devfacts::unique_file file{std::fopen(path, "re")};
  if (!file || std::fgets(buffer, size, file.get()) == nullptr) return -1;
  trimr_string(buffer);
  return 0;
}
