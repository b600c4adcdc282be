// The parents of virtual interfaces that the kernel's link messages do not name.
#pragma once

#include <devfacts/net.h>

#include "core/owner.h"
#include "net/bit_filter.h"

namespace devfacts {

// The index of the interface's parent by iw_parent_name(), 0 where it has none.
int32_t index_of_parent(const char *name);

// Answers the same for the length of one collection. Most interfaces have no parent file, nor the folder that would
// hold it, and each failing open costs about as much as the kernel's own account of the interface: so only names with a
// folder are tried. The first folder is asked for by its name, as the loopback interface is often the only one without
// a link; from the second interface on the folders are listed once.
class parent_finder {
 public:
  int32_t find(const char *name) { return may_have_parent(name) ? index_of_parent(name) : 0; }

 private:
  bool may_have_parent(const char *name);
  bool has_folder(const char *name) const;
  void list_folders();

  enum { opening, asking, listed } state_ = opening;
  unique_fd sysctl_net_;
  bit_filter<1024> folders_;
};

}  // namespace devfacts
