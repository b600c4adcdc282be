/*
 * interfaces: lists the interfaces with their addresses.
 * cc -std=c99 -Wall -Wextra -Wpedantic interfaces.c -o interfaces $(pkg-config --cflags --libs devfacts)
 */
#include <devfacts/net.h>
#include <netinet/in.h>
#include <stdio.h>

static void print_addresses(const ifi_entry *entry) {
  char text[INET6_ADDRSTRLEN];
  const list_link *link;
  for (link = entry->addrs.next; link != &entry->addrs; link = link->next) {
    const ipi_entry *address = (const ipi_entry *)link;
    if (address->family != AF_INET && address->family != AF_INET6) continue;
    if (ifi_ip_ntop(text, sizeof text, address)) printf(" %s/%d", text, (int)address->prefixlen);
  }
}

int main(void) {
  const list_link *link;
  for (link = ifi_get_all_ip()->next; link != &interfaces; link = link->next) {
    const ifi_entry *entry = (const ifi_entry *)link;
    printf("%d: %s", (int)entry->index, entry->name ? entry->name : "?");
    print_addresses(entry);
    putchar('\n');
  }
  ifi_free_all();
  return 0;
}
