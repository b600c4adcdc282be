/** @defgroup core Core services
 * Fatal exit, descriptor flags, the control socket, text, XML items, and files of "key: value" lines.
 *
 * Only the control socket is kept between calls; all other functions here may run in several threads at once.
 * Standard input, output and error must be open before the first call of the library: otherwise a descriptor of the
 * library takes their place, and what the process prints goes into it.
 * @{ */
#ifndef DEVFACTS_CORE_H
#define DEVFACTS_CORE_H

#include <devfacts/api.h>
#include <stdint.h>
#include <stdio.h>

DEVFACTS_BEGIN_DECLS

/** @defgroup core_process Fatal exit, descriptors and the control socket
 * @ingroup core
 * Fatal exit, the flags of a descriptor, and the one socket of all interface ioctls.
 *
 * The control socket is an AF_INET datagram socket, neither bound nor connected. It is process-wide and inherited by
 * fork() and exec(). ioctl_close(), iw_info(), eth_info() and eth_perm_addr() close it; the next request opens a new
 * one, maybe with another number. A program that closes all descriptors from 3 on must call ioctl_close() first.
 * @{ */

/** Writes a formatted text to standard error and ends the process with exit(1).
 * Nothing is added to the text, not even a newline. stdio buffers are flushed and exit handlers run. If other pages
 * say "die() with TEXT", the process ends in this way.
 * @param format printf-style format, followed by its values. */
DEVFACTS_API void die(const char *format, ...) DEVFACTS_NORETURN DEVFACTS_PRINTF(1, 2);

/** Marks a descriptor close-on-exec; its other descriptor flags stay as they are.
 * `set_coe(ioctl_socket())` keeps the control socket from other programs until it is closed.
 * @param fd an open descriptor.
 * @return the result of fcntl(F_SETFD), never negative: if it fails, die() with "cannot set FD_CLOEXEC flag.\n". */
DEVFACTS_API int set_coe(int fd);

/** Makes a descriptor blocking: clears O_NONBLOCK. Its other status flags stay as they are.
 * @param fd an open descriptor.
 * @return the result of fcntl(F_SETFL), never negative: if it fails, die() with "cannot set O_NONBLOCK flags.\n". */
DEVFACTS_API int set_bio(int fd);

/** Makes a descriptor non-blocking: sets O_NONBLOCK. Its other status flags stay as they are.
 * @param fd an open descriptor.
 * @return the result of fcntl(F_SETFL), never negative: if it fails, die() as set_bio(), with the same text. */
DEVFACTS_API int set_nio(int fd);

/** Returns the control socket, which is opened if it is not open.
 * A caller may send ioctls of its own through it, but does not keep the number across a call that closes it.
 * @return the descriptor, which belongs to the library. It is never negative: if no socket can be opened, die() with
 * "cannot create socket, %s\n" and the errno text. */
DEVFACTS_API int ioctl_socket(void);

/** Closes the control socket. If it is not open, nothing happens. */
DEVFACTS_API void ioctl_close(void);

/** @} */

/** @defgroup core_text Text
 * @ingroup core
 * White space and hardware addresses.
 *
 * White space is blank, tab, newline, vertical tab, form feed and carriage return in every locale; bytes from 0x80 on
 * are not.
 * @{ */

/** Removes the white space at the end of a text, in place: each such byte becomes NUL.
 * @param str a text, not null.
 * @return @p str. */
DEVFACTS_API char *trimr_string(char *str);

/** Skips the white space at the start of a text.
 * @param str a text, not null; it is not changed.
 * @return a pointer into @p str: to the first byte that is not white space, which may be the NUL. */
DEVFACTS_API char *triml_string(const char *str);

/** Reads a hardware address: six groups of hexadecimal digits, separated by ":".
 * A group is what strtoul() accepts in base 16 (any number of digits, white space and a sign before it, "0x") and less
 * than 256. The sixth group ends the text or is followed by ":" and anything. White space at the end is an error: use
 * trimr_string() first.
 * @param[out] addr six bytes.
 * @param text the text, not null.
 * @return 0; -1 if @p text is not such an address: the groups before the error are stored, but not one with a wrong
 * character after it. errno is changed. */
DEVFACTS_API int parse_macaddr(uint8_t *addr, const char *text);

/** @} */

/** @defgroup core_xml XML items
 * @ingroup core
 * Lines `"  <name>value</name>\n"` on standard output, through stdio.
 *
 * Names are not escaped. Write errors are not reported; ferror(stdout) shows them. A write to a pipe without a reader
 * raises SIGPIPE, which by default ends the process.
 * @{ */

/** Prints a text without escaping, for values that cannot contain markup.
 * @param name the element; if null, nothing is printed.
 * @param value the text; if null or empty, "N/A" is printed. */
DEVFACTS_API void xml_str_item(const char *name, const char *value);

/** Prints a text, escaped by escape_xml(). Control bytes, which XML does not allow, are printed as they are: network
 * names can contain them.
 * @param name the element; if null, nothing is printed.
 * @param value the text; if null or empty, or without memory to escape it, "N/A" is printed. */
DEVFACTS_API void xml_str_esc_item(const char *name, const char *value);

/** Prints a signed number. @param name the element, not null. @param value the number. */
DEVFACTS_API void xml_int_item(const char *name, int32_t value);

/** Prints a signed number that may be absent.
 * @param name the element; null is allowed only for an absent number, and prints nothing.
 * @param value the number; ignored if it is absent.
 * @param present 0 if the number is absent: "N/A" is printed, if there is a name. */
DEVFACTS_API void xml_int_item_opt(const char *name, int32_t value, uint8_t present);

/** Prints a signed 64-bit number. @param name the element, not null. @param value the number. */
DEVFACTS_API void xml_int64_item(const char *name, int64_t value);

/** Prints a number as printf() does with "%f": six decimals, the locale's decimal point, "nan" and "inf" as words.
 * @param name the element, not null.
 * @param value the number. */
DEVFACTS_API void xml_double_item(const char *name, double value);

/** Escapes a text for XML.
 * Apostrophes, quotation marks, ampersands, less-than and greater-than signs become `&apos;`, `&quot;`, `&amp;`, `&lt;`
 * and `&gt;`. All other bytes stay, control bytes and UTF-8 included. A text that is already escaped is escaped again.
 * @param src the text, not null. It does not overlap @p dst.
 * @param[out] dst null, or a buffer; six times the length of @p src plus 1 bytes are always enough.
 * @return @p dst. If it is null, an allocation of the exact size, which the caller frees; null without memory. */
DEVFACTS_API char *escape_xml(const char *src, char *dst);

/** @} */

/** @defgroup core_lines Files of "key: value" lines
 * @ingroup core
 * Reads the files that the kernel and its drivers have under /proc.
 *
 * A line is a key, a separator and a value, without the white space at the ends of each. The separator is the first "="
 * or ":"; in a line without either it is the first blank, not a tab. Empty lines are skipped. There are no comments,
 * quotes or continuation lines. A NUL byte ends its line. A line of more than 1023 bytes, its newline included, is read
 * as several lines.
 *
 * A prefix selects the lines that begin with it; null and "" select all. It is compared before the line is split, so it
 * may be longer than the key. A selected line that cannot be split ends the walk without a sign. A piece of an overlong
 * line may be such a line: always pass a prefix, though a piece may begin with it.
 *
 * A file that cannot be opened is like an empty one, and a read error like the end. To tell these apart, use fopen(),
 * iterate_raw(), then ferror(). Opening a named pipe waits for its writer.
 *
 * A walk takes 5 KiB of stack; 200 lines take roughly 0.2 ms on a processor of 384 MHz, without the kernel's work.
 * @{ */

/** Called for each selected line.
 * @param context the argument of the walk.
 * @param key,value the two halves. The callback may change them; they are valid until it returns.
 * @return 0 to continue, anything else to end the walk. */
typedef int (*iterate_callback)(void *context, char *key, char *value);

/** The first number; clear it before the walk. */
typedef struct first_match_u32 {
  uint32_t value; /**< the number; for a signed one, (int32_t)value. With found 0: see the callbacks */
  uint8_t found;  /**< 1 if a line was selected and its value is a number in range */
} first_match_u32;

/** The first text; clear it before the walk. */
typedef struct first_match_string {
  char *value;   /**< a copy, which the caller frees; null without memory */
  uint8_t found; /**< 1 if a line was selected and its value copied */
} first_match_string;

/** A value that keyvalue() found. */
typedef struct keyval_entry {
  char *value;     /**< the text, NUL-terminated */
  uint32_t length; /**< its length without the NUL */
} keyval_entry;

/** The values that keyvalue() found. */
typedef struct keyval_list {
  keyval_entry *rows; /**< in the order of the file; means nothing while count is 0 */
  int32_t count;      /**< number of rows */
} keyval_list;

/** Calls the callback for each selected line of a file.
 * @param path the file, not null.
 * @param prefix selects lines.
 * @param callback called on this thread. If null, the file is opened and closed.
 * @param context passed to the callback.
 * @par Example
 * @code
 * first_match_u32 memory = {0};
 * iterate("/proc/meminfo", "MemFree", __return_first_match_in_u32, &memory);
 * if (memory.found) printf("%u kB free\n", (unsigned)memory.value);
 * @endcode */
DEVFACTS_API void iterate(const char *path, const char *prefix, iterate_callback callback, void *context);

/** Calls the callback for each selected line of an open stream, from its start.
 * @param stream is rewound first; one that cannot be, such as a pipe, is read from its current position. It is left
 * after the last line read, and open. Its lock is not taken. If null, nothing happens.
 * @param prefix selects lines.
 * @param callback called on this thread. If null, nothing happens.
 * @param context passed to the callback. */
DEVFACTS_API void iterate_raw(FILE *stream, const char *prefix, iterate_callback callback, void *context);

/** A callback that stores the number of the first selected line and ends the walk.
 * It also does so if that line has no number. It reads the decimal number at the start of the value as strtoul() does
 * with a 32-bit long: white space and a sign are allowed, text after the number is ignored. errno is changed.
 * @param context a ::first_match_u32. Without a number it gets 0, and for one out of range UINT32_MAX; found is 0 then.
 * @param key ignored.
 * @param value the text.
 * @return always 1. */
DEVFACTS_API int __return_first_match_in_u32(void *context, char *key, char *value);

/** As __return_first_match_in_u32(), but for a signed number. It is read as strtol() does with a 32-bit long.
 * @param context a ::first_match_u32; the number is (int32_t)value. A number out of range becomes INT32_MIN or
 * INT32_MAX, with found 0.
 * @param key ignored.
 * @param value the text.
 * @return always 1. */
DEVFACTS_API int __return_first_match_in_i32(void *context, char *key, char *value);

/** A callback that copies the value of the first selected line and ends the walk.
 * @param context a ::first_match_string. A text that it already holds is overwritten, not freed.
 * @param key ignored.
 * @param value the text.
 * @return always 1. */
DEVFACTS_API int __return_first_match_in_string(void *context, char *key, char *value);

/** Collects the values of all selected lines of a file; their keys are dropped.
 * @param path the file, not null.
 * @param prefix selects lines.
 * @param[out] list is overwritten, not released; the caller ends it with keyval_destroy(). Without memory it is empty,
 * with rows null. If @p list is null, nothing happens. */
DEVFACTS_API void keyvalue(const char *path, const char *prefix, keyval_list *list);

/** Releases the values and rows of a list and makes it empty, with rows null.
 * @param list what keyvalue() filled. If it is null or its count is 0, nothing happens, and rows is not cleared. */
DEVFACTS_API void keyval_destroy(keyval_list *list);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
