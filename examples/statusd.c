/*
 * statusd SECONDS FILE [TURNS]: writes the state of all interfaces to FILE, an XML document, every SECONDS.
 * cc -std=c99 -Wall -Wextra -Wpedantic statusd.c -o statusd $(pkg-config --cflags --libs devfacts)
 *
 * A collection ends its process if the kernel refuses it. Each document is therefore made by a child, and the parent
 * only waits. The document of a child that succeeded replaces the last one by rename(), so that a reader never sees
 * half of one. A new child starts with an empty list, so that interfaces come and go with the documents.
 */
#define _DEFAULT_SOURCE
#include <devfacts/core.h>
#include <devfacts/net.h>
#include <devfacts/wireless.h>
#include <errno.h>
#include <net/if.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

/* Names and SSIDs are any bytes. XML holds no control bytes, and these need not be UTF-8 either. */
static void print_text(const char *item, const char *text) {
  char printable[64] = "";
  for (size_t i = 0; text[i] && i < sizeof printable - 1; i++) {
    printable[i] = text[i] >= ' ' && text[i] <= '~' ? text[i] : '?';
  }
  xml_str_esc_item(item, printable);
}

static void print_address(const ipi_entry *address) {
  char ip[INET6_ADDRSTRLEN], with_prefix[INET6_ADDRSTRLEN + 12];
  if (address->family != AF_INET && address->family != AF_INET6) return;
  if (!ifi_ip_ntop(ip, sizeof ip, address)) return;
  snprintf(with_prefix, sizeof with_prefix, "%s/%d", ip, (int)address->prefixlen);
  xml_str_item("address", with_prefix);
}

/* Each query is asked alone, because a refused one leaves its field as it was. */
static void print_radio(const char *name) {
  iw_status status;
  memset(&status, 0, sizeof status);
  if (!iw_capable(name)) return;
  if (iw_essid(&status, name) == 0) print_text("essid", status.essid);
  if (iw_freq_channel(&status, name) == 0 && status.channel > 0) xml_int_item("channel", status.channel);
}

static void print_interface(const ifi_entry *entry) {
  puts(" <interface>");
  xml_int_item("index", entry->index);
  print_text("name", entry->name ? entry->name : "");
  xml_str_item("status", entry->flags & IFF_UP ? "up" : "down");
  for (const ipi_entry *address = ipi_next(entry, NULL); address; address = ipi_next(entry, address)) {
    print_address(address);
  }
  if (entry->stats) {
    xml_int64_item("rx_bytes", entry->stats->rx_bytes);
    xml_int64_item("tx_bytes", entry->stats->tx_bytes);
  }
  if (entry->name) print_radio(entry->name);
  puts(" </interface>");
}

static int fail(const char *what) {
  fprintf(stderr, "statusd: %s: %s\n", what, strerror(errno));
  return EXIT_FAILURE;
}

/* The child: the document goes to standard output, which is the new file. */
static int write_document(const char *path) {
  unlink(path); /* and never opened through a link that somebody else has made there: "x" */
  if (!freopen(path, "wx", stdout)) return fail(path);
  puts("<status>");
  ifi_get_all_ip();
  for (const ifi_entry *entry = ifi_next(NULL); entry; entry = ifi_next(entry)) print_interface(entry);
  puts("</status>");
  ioctl_close();
  ifi_free_all();
  return fflush(stdout) == 0 && !ferror(stdout) && fsync(STDOUT_FILENO) == 0 ? EXIT_SUCCESS : fail(path);
}

/* The child has a limited time, so that a driver that does not answer delays one document and not all. */
static int run_child(const char *path, unsigned limit) {
  int status;
  fflush(NULL); /* or the child would print what is buffered here, too */
  const pid_t child = fork();
  if (child < 0) return fail("fork");
  if (child == 0) {
    alarm(limit);
    exit(write_document(path));
  }
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return fail("waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

int main(int argc, char **argv) {
  const int seconds = argc >= 3 ? atoi(argv[1]) : 0;
  const long turns = argc == 4 ? atol(argv[3]) : -1; /* without TURNS it never ends */
  char new_path[4096];
  int result = EXIT_SUCCESS;
  if (seconds < 1 || argc > 4 || strlen(argv[2]) > sizeof new_path - sizeof ".new") {
    fputs("usage: statusd SECONDS FILE [TURNS]\n", stderr);
    return 2;
  }
  sprintf(new_path, "%s.new", argv[2]);
  for (long done = 0; done != turns; done++) {
    if (done > 0) sleep((unsigned)seconds);
    result = run_child(new_path, (unsigned)seconds + 10);
    if (result == EXIT_SUCCESS && rename(new_path, argv[2]) != 0) result = fail(argv[2]);
    if (result != EXIT_SUCCESS) fputs("statusd: no document this time\n", stderr);
  }
  return result;
}
