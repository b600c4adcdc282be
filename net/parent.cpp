#include "net/parent.h"

#include <devfacts/core.h>
#include <net/if.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/owner.h"

#define SYSCTL_NET "/proc/sys/net"

namespace devfacts {

int32_t index_of_parent(const char *name) {
  char parent[IF_NAMESIZE + 1];
  if (iw_parent_name(name, parent, sizeof parent) != 0) return 0;
  return static_cast<int32_t>(if_nametoindex(parent));
}

bool parent_finder::may_have_parent(const char *name) {
  if (name == nullptr) return false;
  if (!asked_) return asked_ = true;
  if (!listed_) list_folders();
  // A name with a slash in it, which no kernel gives, stands for a path that the listing does not show.
  return folders_.may_hold(text_key(name)) || std::strchr(name, '/') != nullptr;
}

// Where the listing fails, before or in its middle, every name is tried.
void parent_finder::list_folders() {
  listed_ = true;
  const unique_dir folder{opendir(SYSCTL_NET)};
  if (!folder) return folders_.add_all();
  errno = 0;
  while (const dirent *entry = readdir(folder.get())) folders_.add(text_key(entry->d_name));
  if (errno != 0) folders_.add_all();
}

}  // namespace devfacts

int iw_parent_name(const char *name, char *buffer, int size) {
  if (name == nullptr) return -1;
  char path[128];
  const int length = std::snprintf(path, sizeof path, SYSCTL_NET "/%s/%%parent", name);
  if (length >= static_cast<int>(sizeof path)) return -1;
  const devfacts::unique_file file{std::fopen(path, "re")};
  if (!file || std::fgets(buffer, size, file.get()) == nullptr) return -1;
  trimr_string(buffer);
  return 0;
}
