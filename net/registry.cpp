// The list of interfaces and its records.
#include <devfacts/core.h>
#include <devfacts/net.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "net/list.h"

using namespace devfacts;

constinit list_link interfaces{&interfaces, &interfaces};

namespace {

template <class Matches>
ifi_entry *find_first(Matches matches) {
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    if (matches(to_interface(link))) return to_interface(link);
  }
  return nullptr;
}

// The visit may unlink and release the link.
template <class Visit>
void for_each_taking_next(list_link *head, Visit visit) {
  for (list_link *link = head->next, *next = nullptr; link != head; link = next) {
    next = link->next;
    visit(link);
  }
}

void free_address(ipi_entry *address) {
  list_unlink(&address->list);
  std::free(address->addr);
  std::free(address->broadcast);
  std::free(address);
}

}  // namespace

ifi_entry *ifi_find_by_name(const char *name) {
  return find_first(
      [name](const ifi_entry *entry) { return entry->name != nullptr && std::strcmp(entry->name, name) == 0; });
}

ifi_entry *ifi_find_by_index(int32_t index) {
  return find_first([index](const ifi_entry *entry) { return entry->index == index; });
}

ifi_entry *ifi_alloc() {
  auto *entry = static_cast<ifi_entry *>(std::calloc(1, sizeof(ifi_entry)));
  if (entry == nullptr) die("out of memory, %s\n", std::strerror(errno));
  list_init(&entry->list);
  list_init(&entry->addrs);
  return entry;
}

ipi_entry *ipi_alloc() {
  auto *address = static_cast<ipi_entry *>(std::calloc(1, sizeof(ipi_entry)));
  if (address != nullptr) list_init(&address->list);
  return address;
}

void ifi_register(ifi_entry *entry) { list_append(&interfaces, &entry->list); }

void ifi_add_addr(ifi_entry *entry, ipi_entry *address) { list_append(&entry->addrs, &address->list); }

void ifi_free(ifi_entry *entry) {
  for_each_taking_next(&entry->addrs, [](list_link *link) { free_address(to_address(link)); });
  list_unlink(&entry->list);
  std::free(entry->name);
  std::free(entry->stats);
  std::free(entry);
}

void ifi_free_all() {
  for_each_taking_next(&interfaces, [](list_link *link) { ifi_free(to_interface(link)); });
}
