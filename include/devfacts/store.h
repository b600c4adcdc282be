/** @defgroup store Factory records
 * A table of numbered records in memory, and its stored image in a flash partition or a file.
 *
 * Table and store are process-wide: use them from one thread and from one process at a time. Payloads are bytes, whose
 * meaning is the programs' business.
 * @code
 * eeprom_init();                          // the table as it was stored
 * eeprom_get(5, &data, &count);           // reads a record
 * eeprom_update(5, bytes, sizeof bytes);  // replaces it in the table
 * eeprom_write();                         // stores the table
 * eeprom_free();
 * @endcode
 * @{ */
#ifndef DEVFACTS_STORE_H
#define DEVFACTS_STORE_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** @defgroup store_table The table
 * @ingroup store
 * Records in memory. Changes reach the store only with eeprom_write().
 * @{ */

/** A record of the table. Its payload follows it, at record + 1: length - 4 bytes, at least one, then zeros up to a
 * multiple of 4, and in any case one zero, so that a text is terminated. */
typedef struct eeprom_record {
  uint16_t length; /**< bytes in the payload, plus 4 for these two fields */
  uint16_t id;     /**< 0 to 65534 */
} eeprom_record;

/** Called for each record. @param record belongs to the table, until it is replaced or deleted. @return ignored. */
typedef int (*eeprom_callback)(const eeprom_record *record);

/** Puts a copy of the bytes into the table, in place of the record with that id.
 * Without a slot for the id the table grows to twice the id, at most 65535 slots.
 * @param id 0 to 65534.
 * @param data the bytes, not a part of the record that is replaced; ignored if @p size is 0.
 * @param size at most 65531. If 0, nothing happens and the result is 0, whatever the id: an old record stays.
 * @return 0. -1 if the id or size is not allowed, or without memory for slots: the table is unchanged. -1 without
 * memory for the record: the old one is lost. */
DEVFACTS_API int eeprom_update(int32_t id, const void *data, uint32_t size);

/** Returns a record's payload and counts its elements.
 * An element has 1 byte in records with the ids 1 to 4, 6, 11, 17 to 20, 25 and 30 to 34; 2 bytes with 15; 4 with 5, 9,
 * 10, 12 to 14 and 16; 6 with 28 and 29; 8 with 7 and 8; 12 with 26 and 27. With 0, 21 to 24 and 35 the count is 0.
 * @param id 0 to 35. Of other ids no record is found; eeprom_for_each() has them.
 * @param[out] data_out always written: the payload, which belongs to the table until the record is replaced or deleted;
 * null if there is no record.
 * @param[out] count_out always written: the number of whole elements.
 * @return 1 if there is at least one element; otherwise 0, even if there is a payload. */
DEVFACTS_API int eeprom_get(int32_t id, const void **data_out, uint32_t *count_out);

/** Releases a record. @param id any number; if it has no record, nothing happens. */
DEVFACTS_API void eeprom_delete(uint32_t id);

/** Releases all records and the slots of the table; the store is unchanged. */
DEVFACTS_API void eeprom_free(void);

/** Calls the callback for each record, in ascending order of ids.
 * @param callback called on this thread. It may change the table: added records with a higher id follow, deleted ones
 * do not. */
DEVFACTS_API void eeprom_for_each(eeprom_callback callback);

/** @} */

/** @defgroup store_image The store
 * @ingroup store
 * Where the records are stored, and what a power cut does to them.
 *
 * The store is the flash partition "Factory" if it can be opened, otherwise the file /var/cfg/.eeprom. It is opened for
 * reading and writing even by eeprom_init(), which so needs the permission to write. If its folder exists, the file is
 * created, sized to 65536 bytes (a longer one is cut) and set to mode 0644 whenever it is not so, and links are
 * followed: /var/cfg must belong to root alone. "open() failed", "ftruncate() failed" and "fchmod() failed" go to
 * standard error, with the errno text as perror() writes it; only the first ends the call. If RLIMIT_FSIZE is below
 * 65536, SIGXFSZ ends the process.
 *
 * eeprom_write() overwrites the one image in place, and the image has no checksum. A power cut or a kill during it can
 * leave any mixture of old and new bytes, on flash also of neither. eeprom_init() never reads outside an image, but a
 * mixture can load without an error, and always does if no record changed its size. A program that must notice keeps a
 * record with a checksum of the others, and a second copy in a file of its own: examples/provision.c does. Write
 * rarely.
 * @{ */

/** Fills the table with the records of the store.
 * The store is searched for an image of 17 to 65535 bytes at each multiple of 16 bytes; the first that loads whole ends
 * the search. An image before byte 4096 therefore hides all that eeprom_write() stores. Of damaged images before it,
 * the records before the damage stay in the table unless the whole image has their ids.
 *
 * The records that the table held are forgotten, not released: call eeprom_free() first. They may be the only good copy
 * left after a failed eeprom_write().
 * @return 0 if an image was loaded whole. -1 without memory, without a store or without an image: the table is empty
 * and can be filled. -1 also with damaged images only: it has the records before the damage.
 * @par Cost
 * As much stack as the image has bytes, at most 65 KiB: a thread needs 96 KiB. Of a crafted store up to 4096 times its
 * size is read, once for each possible start of an image. */
DEVFACTS_API int eeprom_init(void);

/** Adds the records of the image at the start of a file to the table; they replace records with the same ids.
 * A copy of the whole store is not such a file: its image is at byte 4096. Of a damaged image the records before the
 * damage are added, but not if it is longer than the file, or than 65536 bytes, or if its header is wrong. The call
 * takes as much stack as the image has bytes.
 * @param path the file. If it cannot be opened, "cannot open '%s' file, %s\n" with the path and the errno text goes to
 * standard error. Other failures are silent. */
DEVFACTS_API void eeprom_read(const char *path);

/** Stores the table as an image at byte 4096 of the store. It returns when the bytes are on the medium (msync()).
 * Only bytes that differ are written, but flash is erased and rewritten in whole blocks around them.
 *
 * Failures are silent, except for those of opening the file (see above). To be sure, load the store again and compare,
 * but keep a copy of the records: eeprom_init() drops the table. Nothing is written
 * - of a table without records: the old image stays, and eeprom_init() loads it again;
 * - of an image that does not fit (61440 bytes in the file; in a partition what follows byte 4096) or is longer than
 *   65535 bytes. Its size is 16 bytes plus each record's length, rounded up to a multiple of 4;
 * - if the store cannot be read, or mapped shared (some file systems cannot), or if its file has holes and the file
 *   system is full.
 *
 * SIGBUS can end the process if another one shortens the store meanwhile or the flash fails. */
DEVFACTS_API void eeprom_write(void);

/** Opens the block device of a flash partition for reading and writing.
 * It is /dev/mtdblockN. N comes from the first 2047 bytes of /proc/mtd, after its heading line and up to the first line
 * that is not of its form.
 * @param name the partition's exact name.
 * @return a descriptor, inherited across exec(), which the caller closes; -1 if there is no such partition or it cannot
 * be opened. */
DEVFACTS_API int mtd_block_find(const char *name);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
