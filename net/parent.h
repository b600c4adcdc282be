// The parents of virtual interfaces that the kernel's link messages do not name.
#pragma once

#include <devfacts/net.h>

namespace devfacts {

// Sets the interface's master by iw_parent_name(); it stays 0 if that finds no parent.
void find_parent(ifi_entry *entry);

// Does the same for the interfaces of one collection. Most have no parent file, nor the folder that would contain it,
// and each failing open costs about as much as the kernel's own account of the interface: so the folders are listed
// once, and only names among them are tried. Listing costs three such opens, and loopback is often the only interface
// without a link: so the first one waits for a second, and is tried without the list if there is no other.
class parent_finder {
 public:
  // Sets the master of an interface that is not moved, at the latest in finish().
  void add(ifi_entry *entry);
  void finish();

 private:
  void list_folders();
  bool is_listed(const char *name) const;
  void find(ifi_entry *entry) const;

  ifi_entry *first_ = nullptr;
  bool asked_ = false;     // for the list
  bool complete_ = false;  // it is there as a whole
  size_t size_ = 0;
  alignas(8) char list_[1024];  // the kernel's records
};

}  // namespace devfacts
