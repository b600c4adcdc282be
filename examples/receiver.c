/*
 * receiver PATH [SECONDS]: prints the messages that arrive at PATH, and every SECONDS (60) how many there were.
 * cc -std=c99 -Wall -Wextra -Wpedantic receiver.c -o receiver $(pkg-config --cflags --libs devfacts)
 *
 * One loop waits for the socket, a timer and the signals that end it. A turn takes a limited number of messages, so
 * that a busy sender keeps neither the timer nor the signals waiting; socket_read() has no such limit.
 */
#define _POSIX_C_SOURCE 200809L
#include <ctype.h>
#include <devfacts/net.h>
#include <devfacts/transport.h>
#include <errno.h>
#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "message.h"

enum { DATAGRAM_MAX = 1600, MESSAGES_PER_TURN = 16 };
static unsigned long counts[2]; /* refused, taken */

/* Whoever may write to the socket may send anything: each type checks its size, and text its bytes. */
static int take_signal(const uint8_t *payload, uint32_t length) {
  signal_message message;
  char mac[18];
  if (length != sizeof message) return 0;
  memcpy(&message, payload, sizeof message); /* the payload has no alignment */
  printf("signal of %s: %d dBm\n", ifi_mac_ntop(mac, sizeof mac, message.mac), (int)message.dbm);
  return 1;
}

static int take_note(const uint8_t *payload, uint32_t length) {
  if (length <= offsetof(note_message, text) || length > sizeof(note_message)) return 0;
  fputs("note: ", stdout);
  for (uint32_t i = offsetof(note_message, text); i < length; i++) putchar(isprint(payload[i]) ? payload[i] : '?');
  putchar('\n');
  return 1;
}

static int take(const void *payload, uint32_t length) {
  uint32_t type;
  if (!payload || length < sizeof type) return 0;
  memcpy(&type, payload, sizeof type);
  if (type == MESSAGE_SIGNAL) return take_signal(payload, length);
  if (type == MESSAGE_NOTE) return take_note(payload, length);
  return 0;
}

/* What is still in the queue makes the socket readable again, in the next turn. */
static void turn(int fd) {
  char datagram[DATAGRAM_MAX];
  uint32_t length;
  for (int i = 0; i < MESSAGES_PER_TURN; i++) {
    const int received = socket_input_read_single(fd, datagram, sizeof datagram);
    if (received == 0) return;
    const void *payload = socket_input_extract(datagram, (uint32_t)received, &length);
    counts[take(payload, length)]++;
  }
}

static int fail(const char *what) {
  fprintf(stderr, "%s\n", what);
  return EXIT_FAILURE;
}

static int signal_descriptor(void) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return sigprocmask(SIG_BLOCK, &signals, NULL) == 0 ? signalfd(-1, &signals, SFD_CLOEXEC) : -1;
}

static int timer_descriptor(long seconds) {
  const struct itimerspec interval = {{seconds, 0}, {seconds, 0}};
  const int fd = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  return fd >= 0 && timerfd_settime(fd, 0, &interval, NULL) == 0 ? fd : -1;
}

static int watch(int epoll, int fd) {
  struct epoll_event event = {.events = EPOLLIN, .data = {.fd = fd}};
  return epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event);
}

static void print_counts(void) { printf("%lu messages taken, %lu refused\n", counts[1], counts[0]); }

static int serve(int epoll, int input, int timer, int signals) {
  struct epoll_event events[3];
  uint64_t expirations;
  for (;;) {
    const int ready = epoll_wait(epoll, events, 3, -1);
    if (ready < 0 && errno != EINTR) return fail("receiver: epoll_wait() failed");
    for (int i = 0; i < ready; i++) {
      if (events[i].data.fd == signals) return EXIT_SUCCESS;
      if (events[i].data.fd == input) turn(input);
      if (events[i].data.fd == timer && read(timer, &expirations, sizeof expirations) > 0) print_counts();
    }
    fflush(stdout);
  }
}

int main(int argc, char **argv) {
  const long seconds = argc == 3 ? atol(argv[2]) : 60;
  if (argc < 2 || argc > 3 || seconds < 1) return fail("usage: receiver PATH [SECONDS]");
  umask(0077); /* only this user may send */
  const int input = socket_input_init(argv[1]);
  if (input < 0) return fail("receiver: no socket can be made there");
  const int epoll = epoll_create1(EPOLL_CLOEXEC), timer = timer_descriptor(seconds), signals = signal_descriptor();
  const int is_ready = watch(epoll, input) == 0 && watch(epoll, timer) == 0 && watch(epoll, signals) == 0;
  const int result = is_ready ? serve(epoll, input, timer, signals) : fail("receiver: no timer or no signals");
  socket_input_shutdown(input, argv[1]);
  return result;
}
