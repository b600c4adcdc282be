/*
 * devfacts/store.h - the factory records: a table of numbered records in memory, and its stored image in a flash
 * partition or a file.
 *
 * The table is process-wide and without a lock, and so is the store: use them from one thread, and from one process at
 * a time. Nothing here ends the process, unless it may not write files of 64 KiB (see "The store" below). Payloads are
 * bytes; what a record holds is between the programs that share it.
 *
 *   eeprom_init();                        the table as it was stored
 *   eeprom_get(5, &data, &count);         a look at a record
 *   eeprom_update(5, data, sizeof data);  another one in its place
 *   eeprom_write();                       the table is stored
 *   eeprom_free();
 */
#ifndef DEVFACTS_STORE_H
#define DEVFACTS_STORE_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/* ---- The table ---- */

/**
 * A record of the table. Its payload stands behind it, at record + 1: length - 4 bytes, at least one, then zeros up to
 * a multiple of 4 and at least one zero in any case, so a payload that holds text is terminated.
 */
typedef struct eeprom_record {
  uint16_t length; /**< bytes in the payload, and 4 for these two fields */
  uint16_t id;     /**< 0 to 65534 */
} eeprom_record;

/**
 * Takes one record of a walk. It belongs to the table and is good until that record is replaced or deleted, or
 * eeprom_free().
 *
 * @return anything: eeprom_for_each() does not look at it.
 */
typedef int (*eeprom_callback)(const eeprom_record *record);

/**
 * Puts a copy of the bytes into the table, in the place of the record of that id, which is released first.
 *
 * A table without room for the id grows to twice the id (65535 slots at most); one without slots gets them, for id 0 as
 * well. The store is as it was until eeprom_write().
 *
 * @param id 0 to 65534.
 * @param data the bytes, not a part of the record that is replaced. Not looked at where @p size is 0.
 * @param size their number, at most 65531. With 0 nothing happens, whatever the id is: an old record stays.
 * @return 0; -1 for an id or size beyond that, or without memory for the slots (the table is as it was); -1 without
 * memory for the record (the old one of that id is gone).
 */
DEVFACTS_API int eeprom_update(int32_t id, const void *data, uint32_t size);

/**
 * Looks a record up and counts its elements, whose size is fixed for each id: in bytes, for ids from 0 on,
 * 0 1 1 1 1 4 1 8 8 4 | 4 1 4 4 4 2 4 1 1 1 | 1 0 0 0 0 1 12 12 6 6 | 1 1 1 1 1 0. Where it is 0 none are counted.
 *
 * @param id 0 to 35. Records of other ids are for eeprom_for_each() alone.
 * @param data_out always written: the payload, which belongs to the table and is good until the record is replaced or
 *        deleted, or eeprom_free(); null where there is no such record.
 * @param count_out always written: the whole elements in it, a remainder left out; 0 where there is no such record.
 * @return 1 where there is at least one element; 0 otherwise, with the payload all the same where there is a record.
 */
DEVFACTS_API int eeprom_get(int32_t id, const void **data_out, uint32_t *count_out);

/**
 * Releases a record; without one of that id nothing happens. The store is as it was until eeprom_write().
 *
 * @param id any number.
 */
DEVFACTS_API void eeprom_delete(uint32_t id);

/** Releases all records and the table's slots. Without any, nothing happens. The store stays as it is. */
DEVFACTS_API void eeprom_free(void);

/**
 * Hands each record to a callback, in ascending order of the ids.
 *
 * The callback may change the table: it gets a record that was added behind its place, and none that was deleted.
 *
 * @param callback called for each record, on this thread.
 */
DEVFACTS_API void eeprom_for_each(eeprom_callback callback);

/* ---- The store ----
 *
 * The store is the flash partition "Factory", where the device has one (mtd_block_find()), or else the file
 * /var/cfg/.eeprom. The file is made where its folder exists, by reading, too; at each use it is sized to 65536 bytes
 * (which ends a process whose RLIMIT_FSIZE is below that) and gets the mode 0644, if it has not both already: its times
 * then stay as they are until a byte of it changes. Failures go to standard error: "open() failed", "ftruncate()
 * failed", "fchmod() failed", each with the text of errno as perror() writes it; only the first is the end of it.
 *
 * Power cuts. eeprom_write() writes over the one stored image in place, there is no second copy, and no checksum tells
 * a torn image from a whole one. After a power cut, or a process killed, while it writes, the store can hold any
 * mixture of the old bytes and the new ones, and flash that was being erased bytes that are neither. eeprom_init()
 * reads no byte beyond an image whatever it holds, but a mixture can load as good, with records of both, mixed records,
 * or fewer. A caller who minds: write rarely, and only what changed; have a record that holds a checksum of the others,
 * and look at it after eeprom_init(); keep the records in a second place as well, for eeprom_read().
 */

/**
 * Starts the family: a table of 35 empty slots, filled with the records of the store.
 *
 * The store is searched for an image of 17 to 65535 bytes at every multiple of 16 bytes, and the first that loads whole
 * is the last that is looked at. Of a damaged one in front of it the records before the damage are in the table, too,
 * where the good one has none of that id; but none of an image that the end of the store cuts short, or whose header is
 * bad.
 *
 * The slots and records that the table held are forgotten, not released: eeprom_free() comes first, where it is not the
 * first call.
 *
 * @return 0 if an image was loaded whole; -1 if not: no memory for the slots (the table has none then), no store, no
 * image in it (the table is empty, and can be filled and written), or only damaged ones. About 80 KiB of stack are
 * used.
 */
DEVFACTS_API int eeprom_init(void);

/**
 * Merges the image at the start of a file into the table, over the records of the same ids. The file must begin with
 * the image, of at most 65536 bytes; of a damaged one the records before the damage are taken, but none of one that the
 * end of the file cuts short, or whose header is bad. The image's length of stack is used.
 *
 * @param path the file. If it cannot be opened, "cannot open '%s' file, %s\n" goes to standard error, with the path and
 *        the errno text. Other failures are silent.
 */
DEVFACTS_API void eeprom_read(const char *path);

/**
 * Stores the table as an image at byte 4096 of the store; other bytes of the store stay as they are, and so does the
 * table.
 *
 * Only bytes that change are written, but flash is erased a block at a time, and bytes around the image with it. The
 * caller gets no word of failure, and should read the store again where it matters. Nothing at all is written of
 * - a table without records: the image of earlier ones stays, and eeprom_init() brings them back;
 * - an image that the store has no room for (61440 bytes in the file; what the partition has behind byte 4096) or that
 * is longer than 65535 bytes, which eeprom_init() would not find: 16 bytes, and each record's length up to a multiple
 * of 4;
 * - a file on a full file system that has promised room which it does not have, as far as its holes or the number of
 * its blocks tell, and a store that cannot be read or mapped.
 *
 * It returns when the bytes are on the medium (msync() with MS_SYNC), unless that failed.
 */
DEVFACTS_API void eeprom_write(void);

/**
 * Opens the block device of a flash partition, /dev/mtdblockN, for reading and writing. /proc/mtd tells its number; of
 * that list the first 2047 bytes count, up to the first line that is not of its form.
 *
 * @param name the partition's name, exactly.
 * @return a descriptor, which the caller closes, and which is inherited across exec; -1 where there is no such
 * partition or it cannot be opened.
 */
DEVFACTS_API int mtd_block_find(const char *name);

DEVFACTS_END_DECLS

#endif
