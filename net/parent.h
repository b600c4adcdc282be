// The parents of virtual interfaces that the kernel's link messages do not name.
#pragma once

#include <devfacts/net.h>

#include "net/bit_filter.h"

namespace devfacts {

// The index of the interface's parent by iw_parent_name(), 0 where it has none.
int32_t index_of_parent(const char *name);

// Answers the same for the length of one collection. Most interfaces have no parent file, and each failing open costs
// about as much as the kernel's own account of the interface: so from the second interface on, as the loopback
// interface is often the only one, the folders that can hold such a file are listed, and a name that is surely not
// among them is not tried.
class parent_finder {
 public:
  int32_t find(const char *name) { return may_have_parent(name) ? index_of_parent(name) : 0; }

 private:
  bool may_have_parent(const char *name);
  void list_folders();

  bool asked_ = false;
  bool listed_ = false;
  bit_filter<1024> folders_;
};

}  // namespace devfacts
