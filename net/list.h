// The circular list that links records by their first member.
#pragma once

#include <devfacts/net.h>

namespace devfacts {

inline void list_init(list_link *link) { link->next = link->prev = link; }

inline bool list_is_empty(const list_link *head) { return head->next == head; }

inline void list_append(list_link *head, list_link *link) {
  link->next = head;
  link->prev = head->prev;
  head->prev->next = link;
  head->prev = link;
}

inline void list_unlink(list_link *link) {
  link->prev->next = link->next;
  link->next->prev = link->prev;
  list_init(link);
}

inline ifi_entry *to_interface(list_link *link) { return reinterpret_cast<ifi_entry *>(link); }

inline ipi_entry *to_address(list_link *link) { return reinterpret_cast<ipi_entry *>(link); }

}  // namespace devfacts
