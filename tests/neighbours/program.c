/* A program with a die() of its own, linked with us and a library that has our names, in either order. */
#include <devfacts/core.h>
#include <devfacts/net.h>
#include <net/if.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

void die(const char *format, ...) {
  (void)format;
  _exit(42);
}

int main(void) {
  int status = 0;
  const ifi_entry *lo = NULL;
  if (interfaces.next != &interfaces) return puts("the list does not start empty"), 1;
  if (ifi_get_all_ip() == &interfaces) lo = ifi_find_by_name("lo");
  if (lo == NULL || (unsigned)lo->index != if_nametoindex("lo")) return puts("another list"), 1;
  if (fork() == 0) set_coe(-1);
  wait(&status);
  return WEXITSTATUS(status) == 1 ? 0 : (puts("another die"), 1);
}
