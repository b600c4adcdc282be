/* A program with a die() of its own, linked with us and a library that has our names, in either order. */
#include <devfacts/core.h>
#include <devfacts/net.h>
#include <net/if.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

void die(const char *format, ...) {
  (void)format;
  _exit(42);
}

static int status_of_bad_descriptor(void) {
  int status = 0;
  pid_t child = fork();
  if (child == 0) set_coe(-1);
  waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

int main(void) {
  struct if_nameindex *names = if_nameindex();
  const struct if_nameindex *expected = names;
  const list_link *link = interfaces.next;
  if (link != &interfaces) return puts("the list does not start empty"), 1;
  for (link = ifi_get_all_ip()->next; link != &interfaces; link = link->next, ++expected) {
    const ifi_entry *entry = (const ifi_entry *)link;
    if (expected->if_name == NULL || strcmp(entry->name, expected->if_name) != 0) return puts("another list"), 1;
  }
  if (expected->if_name != NULL) return puts("a shorter list"), 1;
  if_freenameindex(names);
  return status_of_bad_descriptor() == 1 ? 0 : (puts("another die"), 1);
}
