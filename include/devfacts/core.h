/*
 * devfacts/core.h - fatal exit, descriptor flags, the control socket, text trimming, XML items, and texts of
 * "key: value" lines.
 *
 * Everything here works on the caller's thread and takes no lock: use one thread at a time.
 */
#ifndef DEVFACTS_CORE_H
#define DEVFACTS_CORE_H

#include <devfacts/api.h>
#include <stdint.h>
#include <stdio.h>

DEVFACTS_BEGIN_DECLS

/**
 * Gives up: writes the formatted text to standard error and ends the process with exit(1).
 *
 * Nothing is added to the text, neither a prefix nor a newline. The exit is the normal one: stdio buffers are flushed
 * and exit handlers run. The library calls this itself where a declaration below says so.
 *
 * @param format printf-style format, followed by the values it asks for.
 */
DEVFACTS_API void die(const char *format, ...) DEVFACTS_NORETURN DEVFACTS_PRINTF(1, 2);

/**
 * Marks a descriptor close-on-exec (fcntl F_GETFD, F_SETFD); its other descriptor flags stay as they are.
 *
 * @param fd the caller's descriptor.
 * @return what the setting fcntl returned, never negative.
 * A failing F_SETFD ends the process through die() with "cannot set FD_CLOEXEC flag.\n".
 */
DEVFACTS_API int set_coe(int fd);

/**
 * Makes a descriptor blocking (clears O_NONBLOCK with fcntl F_GETFL, F_SETFL); its other status flags stay as they are.
 *
 * @param fd the caller's descriptor.
 * @return what the setting fcntl returned, never negative.
 * A failing F_SETFL ends the process through die() with "cannot set O_NONBLOCK flags.\n".
 */
DEVFACTS_API int set_bio(int fd);

/**
 * Makes a descriptor non-blocking (sets O_NONBLOCK); otherwise as set_bio(), with the same words on failure.
 *
 * @param fd the caller's descriptor.
 * @return what the setting fcntl returned, never negative.
 */
DEVFACTS_API int set_nio(int fd);

/**
 * The one AF_INET datagram socket that all interface ioctls of the library go through.
 *
 * The first call makes it, later calls return the same number until ioctl_close(). It is process-wide, belongs to the
 * library, is neither bound nor connected and is inherited across exec. A caller may send its own ioctls through it,
 * but keeps the number no longer than until the next call that closes it: ioctl_close() and the whole-status queries.
 *
 * @return the descriptor, never negative.
 * When no socket can be made the process ends through die() with "cannot create socket, %s\n" and the errno text.
 */
DEVFACTS_API int ioctl_socket(void);

/**
 * Closes the control socket; without an open one it does nothing. The next ioctl_socket() makes a fresh one.
 */
DEVFACTS_API void ioctl_close(void);

/**
 * Cuts the white space at the end of a text, in place: each byte of it becomes NUL.
 *
 * White space is blank, tab, newline, vertical tab, form feed and carriage return, whatever the locale; a byte of 0x80
 * or above never is. No byte before @p str is read or written.
 *
 * @param str NUL-terminated text, changed in place.
 * @return @p str.
 */
DEVFACTS_API char *trimr_string(char *str);

/**
 * Skips the white space (as trimr_string() knows it) at the start of a text.
 *
 * @param str NUL-terminated text; it is not changed.
 * @return the first other byte, the terminating NUL if there is none: a place in @p str, not to be freed.
 */
DEVFACTS_API char *triml_string(const char *str);

/*
 * XML items: one line "  <name>value</name>\n" each, printed on standard output through stdio. The name is printed as
 * it is, never escaped. Write errors are not looked at: ferror(stdout) tells.
 */

/**
 * Prints a text item, unescaped: for values that can hold no markup.
 *
 * @param name the element's name; null prints nothing at all.
 * @param value the text; null or an empty one prints "N/A".
 */
DEVFACTS_API void xml_str_item(const char *name, const char *value);

/**
 * Prints a text item, escaped as by escape_xml().
 *
 * @param name the element's name; null prints nothing at all.
 * @param value the text; null or an empty one prints "N/A", as does a text that there is no memory to escape.
 */
DEVFACTS_API void xml_str_esc_item(const char *name, const char *value);

/**
 * Prints a signed number item.
 *
 * @param name the element's name, not null.
 * @param value the number.
 */
DEVFACTS_API void xml_int_item(const char *name, int32_t value);

/**
 * Prints a signed number item that may be absent.
 *
 * @param name the element's name; null prints nothing where the value is absent, and is not allowed where it is
 * present.
 * @param value the number; not looked at where it is absent.
 * @param present 0: the line says "N/A"; anything else: as xml_int_item().
 */
DEVFACTS_API void xml_int_item_opt(const char *name, int32_t value, uint8_t present);

/**
 * Prints a signed 64-bit number item.
 *
 * @param name the element's name, not null.
 * @param value the number.
 */
DEVFACTS_API void xml_int64_item(const char *name, int64_t value);

/**
 * Prints a floating-point item with six decimals; the decimal point is that of the program's locale, as printf's is.
 *
 * @param name the element's name, not null.
 * @param value the number.
 */
DEVFACTS_API void xml_double_item(const char *name, double value);

/**
 * Escapes a text for XML: each apostrophe, quotation mark, ampersand, less-than and greater-than sign becomes its
 * entity, every other byte stays as it is.
 *
 * It works on bytes, so UTF-8 comes through unchanged, and so do control bytes, which XML does not allow. A text that
 * is escaped already is escaped again.
 *
 * @param src NUL-terminated text; it is not changed and must not overlap @p dst.
 * @param dst room for the result, or null; six times the length of @p src plus 1 is always enough.
 * @return @p dst, or where that is null an allocation of exactly the needed size, which the caller frees;
 *         null when there is no memory for it.
 */
DEVFACTS_API char *escape_xml(const char *src, char *dst);

/*
 * Texts of "key: value" lines, as the kernel and its drivers have them under /proc.
 *
 * A line is a key, a separator and a value, without the white space (as trimr_string() knows it) at the ends of each.
 * The separator is the first "=" or ":", whichever comes first; a line without both is split at its first blank (a tab
 * does not count). Empty lines are passed over. There are no comments, no quotes and no lines that go on. A line of
 * more than 1023 bytes, its newline included, counts as several lines of at most that many; a NUL byte ends its line.
 *
 * A prefix selects the lines that begin with it. It is compared with the line before the split, so it may reach beyond
 * the key; null and an empty one select all. A selected line that cannot be split (no "=", no ":", no blank) ends the
 * walk as the end of the file and a read error do. None of these functions prints or keeps anything between calls, so
 * several threads may walk at once, each its own file or stream: a stream's lock is not taken.
 */

/**
 * Called for a line.
 *
 * @param context what the caller of the walk gave.
 * @param key,value the two halves, which may be changed in place and are gone when the callback returns.
 * @return 0 to go on, anything else to end the walk.
 */
typedef int (*iterate_callback)(void *context, char *key, char *value);

/** A slot for the first number; clear it, walk, and look at found. */
typedef struct first_match_u32 {
  uint32_t value; /**< the number, a negative one as its two's complement */
  uint8_t found;  /**< 1 if a line was selected and its value is a number; value means nothing otherwise */
} first_match_u32;

/** A slot for the first text; clear it, walk, and look at found. */
typedef struct first_match_string {
  char *value;   /**< a copy of the value, which the caller frees; null where there is none */
  uint8_t found; /**< 1 if a line was selected and its value copied */
} first_match_string;

/** A value that keyvalue() found. */
typedef struct keyval_entry {
  char *value;     /**< the text, NUL-terminated */
  uint32_t length; /**< its length without the NUL */
} keyval_entry;

/** The values that keyvalue() found; keyval_destroy() releases them. */
typedef struct keyval_list {
  keyval_entry *rows; /**< in the order of the file; means nothing while count is 0 */
  int32_t count;      /**< number of rows */
} keyval_list;

/**
 * Walks a file and gives the callback each selected line.
 *
 * @param path the file, not null. One that cannot be opened is like an empty one.
 * @param prefix selects lines, as told above.
 * @param callback called on this thread; null does nothing.
 * @param context handed to the callback.
 */
DEVFACTS_API void iterate(const char *path, const char *prefix, iterate_callback callback, void *context);

/**
 * Walks an open stream from its start and gives the callback each selected line.
 *
 * @param stream the caller's, at any place; rewind() sets it to its start first. It is left where the walk ended, which
 * is behind the last line read, and stays open. Null does nothing.
 * @param prefix selects lines, as told above.
 * @param callback called on this thread; null does nothing.
 * @param context handed to the callback.
 */
DEVFACTS_API void iterate_raw(FILE *stream, const char *prefix, iterate_callback callback, void *context);

/**
 * A callback that stores the number of the first line, even where a later line would have a better one.
 *
 * The number is the decimal one at the value's start, as strtoul() of a 32-bit long reads it: white space and a sign
 * allowed, text behind it ignored. Beyond the limits value is UINT32_MAX, and found 0. errno is changed.
 *
 * @param context the ::first_match_u32 slot.
 * @param key not looked at.
 * @param value the text.
 * @return always 1, which ends the walk.
 */
DEVFACTS_API int __return_first_match_in_u32(void *context, char *key, char *value);

/**
 * The same for a signed number, as strtol() of a 32-bit long reads it; value holds its two's complement. Beyond the
 * limits value is the limit, and found 0.
 *
 * @param context the ::first_match_u32 slot.
 * @param key not looked at.
 * @param value the text.
 * @return always 1, which ends the walk.
 */
DEVFACTS_API int __return_first_match_in_i32(void *context, char *key, char *value);

/**
 * A callback that stores a copy of the first line's value. Without memory for it value is null and found 0.
 *
 * @param context the ::first_match_string slot, whose text the caller frees.
 * @param key not looked at.
 * @param value the text.
 * @return always 1, which ends the walk.
 */
DEVFACTS_API int __return_first_match_in_string(void *context, char *key, char *value);

/**
 * Collects the values of all selected lines of a file; their keys are dropped.
 *
 * @param path the file, not null. One that cannot be opened is like an empty one.
 * @param prefix selects lines, as told above.
 * @param list what it held is forgotten, not released: count becomes 0 first, and rows is set with the first value. The
 * caller ends the list with keyval_destroy(). Without memory it is empty, with rows null. A null list does nothing.
 */
DEVFACTS_API void keyvalue(const char *path, const char *prefix, keyval_list *list);

/**
 * Releases the values and the rows of a list and makes it empty, with rows null. A list whose count is 0 is left as it
 * is, and null does nothing.
 *
 * @param list what keyvalue() filled.
 */
DEVFACTS_API void keyval_destroy(keyval_list *list);

/**
 * Reads a hardware address: six groups of hexadecimal digits with ":" between them.
 *
 * A group is what strtoul() takes in base 16 (one digit or many, white space and a sign before it, "0x"), as long as it
 * is below 256. Behind the sixth group stands the end of the text or a ":", and what follows that does not matter.
 *
 * @param addr room for six bytes.
 * @param text NUL-terminated text.
 * @return 0; -1 where the text holds no such address: the groups before the fault are stored. errno is changed.
 */
DEVFACTS_API int parse_macaddr(uint8_t *addr, const char *text);

DEVFACTS_END_DECLS

#endif
