// The parents of virtual interfaces that the kernel's link messages do not name.
#pragma once

#include <devfacts/net.h>

#include "net/bit_filter.h"

namespace devfacts {

// Sets the interface's master by iw_parent_name(); it stays 0 where that finds none.
void find_parent(ifi_entry *entry);

// Does the same for the length of one collection. Most interfaces have no parent file, nor the folder that would hold
// it, and each failing open costs about as much as the kernel's own account of the interface: so the folders are listed
// once, and only names among them are tried. Loopback is often the only interface without a link, so the first one
// waits until there is a second; alone it is tried in the end.
class parent_finder {
 public:
  // Sets the master of an interface that stays where it is, at the latest in finish().
  void add(ifi_entry *entry);
  void finish();

 private:
  void find(ifi_entry *entry) const;
  void list_folders();

  ifi_entry *first_ = nullptr;
  bool listed_ = false;
  bit_filter<1024> folders_;
};

}  // namespace devfacts
