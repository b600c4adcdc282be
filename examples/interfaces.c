/*
 * interfaces: lists the interfaces with their addresses.
 * cc -std=c99 -Wall -Wextra -Wpedantic interfaces.c -o interfaces $(pkg-config --cflags --libs devfacts)
 */
#include <devfacts/net.h>
#include <netinet/in.h>
#include <stdio.h>

static void print_address(const ipi_entry *address) {
  char text[INET6_ADDRSTRLEN];
  if (address->family != AF_INET && address->family != AF_INET6) return;
  if (ifi_ip_ntop(text, sizeof text, address)) printf(" %s/%d", text, (int)address->prefixlen);
}

int main(void) {
  ifi_get_all_ip();
  for (const ifi_entry *entry = ifi_next(NULL); entry; entry = ifi_next(entry)) {
    printf("%d: %s", (int)entry->index, entry->name ? entry->name : "?");
    for (const ipi_entry *address = ipi_next(entry, NULL); address; address = ipi_next(entry, address)) {
      print_address(address);
    }
    putchar('\n');
  }
  ifi_free_all();
  return 0;
}
