/*
 * monitor [SECONDS]: prints each change of a link as it comes: "+ NAME up", "- NAME" and so on.
 * cc -std=c99 -Wall -Wextra -Wpedantic monitor.c -o monitor $(pkg-config --cflags --libs devfacts)
 *
 * The list of interfaces holds the last known state. The kernel drops messages for a reader that is too slow, and says
 * so by an error, at which nl_recv() ends its process. The messages are therefore read by a child. If that ends, the
 * parent starts another one, which lists all links again: a state that was missed is not missed for long.
 * The receive timeout of SECONDS (5) lets the child look whether its parent is still there.
 */
#define _DEFAULT_SOURCE
#include <devfacts/net.h>
#include <errno.h>
#include <net/if.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

/* A name may hold any byte but '/', ':' and white space; a terminal does not get its control bytes. */
static void print_change(char sign, const ifi_entry *entry, const char *state) {
  printf("%c ", sign);
  for (const char *c = entry->name ? entry->name : "?"; *c; c++) putchar(*c > ' ' && *c <= '~' ? *c : '?');
  printf("%s\n", state);
}

static const char *state_of(const ifi_entry *entry) {
  if (!(entry->flags & IFF_UP)) return " down";
  return entry->flags & IFF_RUNNING ? " up, running" : " up";
}

static int is_same(const ifi_entry *a, const ifi_entry *b) {
  return state_of(a) == state_of(b) && a->name && b->name && strcmp(a->name, b->name) == 0;
}

/* Registers the interface that the message describes, and removes the record that it had before. */
static void link_is(struct nlmsghdr *message, ifi_entry *before) {
  const ifi_entry *now;
  nl_collect_interface(message);
  now = (const ifi_entry *)interfaces.prev;
  if (!before) print_change('+', now, state_of(now));
  if (before && !is_same(before, now)) print_change('=', now, state_of(now));
  if (before) ifi_free(before);
}

static void link_is_gone(ifi_entry *before) {
  if (!before) return;
  print_change('-', before, "");
  ifi_free(before);
}

static int take_message(struct nlmsghdr *message) {
  const struct ifinfomsg *info = NLMSG_DATA(message);
  ifi_entry *before;
  if (message->nlmsg_type != RTM_NEWLINK && message->nlmsg_type != RTM_DELLINK) return 0;
  if (message->nlmsg_len < NLMSG_LENGTH(sizeof *info)) return 0;
  if (info->ifi_family != AF_UNSPEC) return 0; /* a bridge speaks of its port, not of the link */
  before = ifi_find_by_index(info->ifi_index);
  if (message->nlmsg_type == RTM_NEWLINK) {
    link_is(message, before);
  } else {
    link_is_gone(before);
  }
  return 0;
}

/* The child. The group is joined before the links are listed, so that no change falls between the two. */
static void watch(pid_t parent, long seconds) {
  struct timeval timeout;
  nl_handle handle;
  timeout.tv_sec = seconds;
  timeout.tv_usec = 0;
  nl_open(&handle, NETLINK_ROUTE, RTMGRP_LINK);
  if (setsockopt(handle.fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout) != 0) {
    perror("monitor: SO_RCVTIMEO");
    exit(EXIT_FAILURE);
  }
  nl_dump(&handle, RTM_GETLINK);
  while (getppid() == parent) nl_recv(&handle, take_message);
  nl_close(&handle);
  ifi_free_all();
}

int main(int argc, char **argv) {
  const long seconds = argc == 2 ? atol(argv[1]) : 5;
  const pid_t parent = getpid();
  if (argc > 2 || seconds < 1) {
    fputs("usage: monitor [SECONDS]\n", stderr);
    return 2;
  }
  setvbuf(stdout, NULL, _IOLBF, 0);
  for (;;) {
    const pid_t child = fork();
    if (child == 0) {
      watch(parent, seconds);
      exit(EXIT_SUCCESS);
    }
    if (child < 0) perror("monitor: fork");
    while (child > 0 && waitpid(child, NULL, 0) < 0 && errno == EINTR) continue;
    fputs("\nmonitor: changes were lost; all links again:\n", stderr);
    sleep(1); /* what ends a child at once must not keep the processor busy */
  }
}
