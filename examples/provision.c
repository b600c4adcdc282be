/*
 * provision set ID TEXT | verify | backup | restore: the factory records, safe from a power cut.
 * cc -std=c99 -Wall -Wextra -Wpedantic provision.c -o provision $(pkg-config --cflags --libs devfacts)
 *
 * eeprom_write() overwrites the store in place. Here a record holds the checksum of the others, and a file a second
 * copy of the image. The copy is written after the store was found good, so that at any time one of the two is whole.
 * "restore", at each boot, repairs the other. "backup" accepts the records of a device that has no checksum yet.
 */
#define _POSIX_C_SOURCE 200809L
#include <arpa/inet.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define COPY "/var/cfg/.eeprom.copy"
enum { CHECKSUM_ID = 64, IMAGE_OFFSET = 4096, IMAGE_MAX = 65536 };

static uint32_t checksum;    /* CRC-32 of the records in the table */
static const void *recorded; /* the payload of the checksum record, padded to 4 bytes at least */

static uint32_t crc32(uint32_t crc, const void *data, size_t count) {
  const uint8_t *bytes = data;
  for (crc = ~crc; count > 0; count--) {
    crc ^= *bytes++;
    for (int bit = 0; bit < 8; bit++) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
  }
  return ~crc;
}

static int add_record(const eeprom_record *record) {
  const uint16_t head[] = {htons(record->length), htons(record->id)};
  if (record->id == CHECKSUM_ID) {
    recorded = record + 1;
  } else {
    checksum = crc32(crc32(checksum, head, sizeof head), record + 1, record->length - sizeof *record);
  }
  return 0;
}

static int is_good(void) {
  checksum = 0;
  recorded = NULL;
  eeprom_for_each(add_record);
  const uint32_t wanted = htonl(checksum);
  return recorded && memcmp(recorded, &wanted, sizeof wanted) == 0;
}

static int store_is_good(void) {
  eeprom_free();
  return eeprom_init() == 0 && is_good();
}

static int copy_is_good(void) {
  eeprom_free();
  eeprom_read(COPY);
  return is_good();
}

static int fail(const char *what) {
  fprintf(stderr, "provision: %s\n", what);
  return EXIT_FAILURE;
}

static int back_up(uint32_t wanted) {
  static char image[IMAGE_MAX];
  const int flash = mtd_block_find("Factory"), store = flash < 0 ? open("/var/cfg/.eeprom", O_RDONLY) : flash;
  const int copy = open(COPY, O_WRONLY | O_CREAT, 0644);
  const ssize_t size = pread(store, image, sizeof image, IMAGE_OFFSET); /* what follows the image does no harm */
  const int is_written = size > 0 && write(copy, image, (size_t)size) == size && fsync(copy) == 0;
  close(store);
  close(copy);
  return is_written && copy_is_good() && checksum == wanted ? EXIT_SUCCESS : fail("the second copy was not written");
}

static int save(void) {
  is_good();
  const uint32_t wanted = checksum, record = htonl(wanted);
  if (eeprom_update(CHECKSUM_ID, &record, sizeof record) != 0) return fail("out of memory");
  eeprom_write(); /* which does not tell whether it failed: the store is read again */
  return store_is_good() && checksum == wanted ? back_up(wanted) : fail("the store does not hold the new records");
}

static int verify(void) {
  if (!store_is_good()) return fail("the store is damaged, or has no checksum");
  const uint32_t wanted = checksum;
  return copy_is_good() && checksum == wanted ? EXIT_SUCCESS : fail("the second copy is not that of the store");
}

static int set(const char *id, const char *text) {
  char *end;
  const long number = strtol(id, &end, 10);
  if (end == id || *end || number < 0 || number > 65534 || number == CHECKSUM_ID) return fail("no such id");
  if (verify() != EXIT_SUCCESS) return EXIT_FAILURE; /* nothing is overwritten without a good copy */
  if (!*text || eeprom_update((int32_t)number, text, (uint32_t)strlen(text)) != 0) return fail("the text does not fit");
  return save();
}

static int backup(void) {
  if (eeprom_init() != 0 || (!is_good() && recorded)) return fail("the store is damaged");
  return save();
}

static int restore(void) {
  if (verify() == EXIT_SUCCESS) return EXIT_SUCCESS;
  if (store_is_good()) return back_up(checksum);
  return copy_is_good() ? save() : fail("there is no good copy: nothing was written");
}

int main(int argc, char **argv) {
  atexit(eeprom_free);
  if (argc == 4 && strcmp(argv[1], "set") == 0) return set(argv[2], argv[3]);
  if (argc == 2 && strcmp(argv[1], "verify") == 0) return verify();
  if (argc == 2 && strcmp(argv[1], "backup") == 0) return backup();
  if (argc == 2 && strcmp(argv[1], "restore") == 0) return restore();
  fputs("usage: provision set ID TEXT | verify | backup | restore\n", stderr);
  return 2;
}
