/*
 * devfacts/core.h - fatal exit, descriptor flags, the control socket, text trimming and XML items.
 *
 * Everything here works on the caller's thread and takes no lock: use one thread at a time.
 */
#ifndef DEVFACTS_CORE_H
#define DEVFACTS_CORE_H

#include <devfacts/api.h>
#include <stdint.h>

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
 * Escapes a text for XML: each of ' " & < > becomes its entity, every other byte stays as it is.
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

DEVFACTS_END_DECLS

#endif
