/*
 * sender PATH signal MAC DBM | sender PATH note TEXT: sends one message to the receiver at PATH.
 * cc -std=c99 -Wall -Wextra -Wpedantic sender.c -o sender $(pkg-config --cflags --libs devfacts)
 *
 * Exit status 0: the message is in the receiver's queue. 1: it is not. 2: the arguments are wrong.
 * It may still be unread: to know that takes an answer, over a socket of the sender's own.
 */
#include <devfacts/core.h>
#include <devfacts/transport.h>
#include <errno.h>
#include <limits.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "message.h"

static int is_number(const char *text, int32_t *number) {
  char *end;
  long value;
  errno = 0;
  value = strtol(text, &end, 10);
  if (end == text || *end || errno != 0 || value < INT16_MIN || value > INT16_MAX) return 0;
  *number = (int32_t)value;
  return 1;
}

/*
 * socket_write() returns 0 if it sent the message, and also if it could not connect. It leaves errno alone only in
 * the first case. It waits at most 2 seconds for a receiver whose queue is full.
 */
static int is_sent(const void *message, size_t size, const char *path) {
  errno = 0;
  return socket_write(message, (uint32_t)size, path) == 0 && errno == 0;
}

static int send_message(const void *message, size_t size, const char *path) {
  if (is_sent(message, size, path)) return 0;
  fprintf(stderr, "sender: the message to %s was not sent\n", path);
  return 1;
}

static int refuse(const char *why) {
  fprintf(stderr, "%s\n", why);
  return 2;
}

static int send_signal(const char *path, const char *mac, const char *dbm) {
  signal_message message;
  memset(&message, 0, sizeof message);
  message.type = MESSAGE_SIGNAL;
  if (parse_macaddr(message.mac, mac) != 0) return refuse("sender: this is not a hardware address");
  if (!is_number(dbm, &message.dbm)) return refuse("sender: this is not a signal in dBm");
  return send_message(&message, sizeof message, path);
}

static int send_note(const char *path, const char *text) {
  const size_t length = strlen(text);
  note_message message;
  message.type = MESSAGE_NOTE;
  if (length < 1 || length > sizeof message.text) return refuse("sender: the note is empty or too long");
  memcpy(message.text, text, length);
  return send_message(&message, offsetof(note_message, text) + length, path);
}

int main(int argc, char **argv) {
  if (argc == 5 && strcmp(argv[2], "signal") == 0) return send_signal(argv[1], argv[3], argv[4]);
  if (argc == 4 && strcmp(argv[2], "note") == 0) return send_note(argv[1], argv[3]);
  return refuse("usage: sender PATH signal MAC DBM | sender PATH note TEXT");
}
