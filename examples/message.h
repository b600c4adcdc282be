/*
 * message.h - what sender.c and receiver.c say to each other: a type, then the fields of that type, in host order.
 */
#ifndef MESSAGE_H
#define MESSAGE_H

#include <stdint.h>

enum { MESSAGE_SIGNAL = 1, MESSAGE_NOTE = 2 };
enum { NOTE_MAX = 200 };

/** MESSAGE_SIGNAL: how well a peer is received. */
typedef struct signal_message {
  uint32_t type;
  int32_t dbm;
  uint8_t mac[6];
  uint8_t reserved[2]; /**< zero */
} signal_message;

/** MESSAGE_NOTE: a text of 1 to NOTE_MAX bytes, without a terminating NUL. The message ends with the text. */
typedef struct note_message {
  uint32_t type;
  char text[NOTE_MAX];
} note_message;

#endif
