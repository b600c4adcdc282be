/** @defgroup cfg_store The configuration store
 * What is asked of the configuration store of a device's firmware: a map from dotted keys ("radio.0.master") to texts.
 *
 * What is said of the stand-in, the library devfacts-platform of this package, may differ in a firmware's library. Use
 * one store from one thread at a time. No function prints.
 *
 * cfg_key_exists() and cfg_get() take a key as a printf-style format with its values. A key without values must not
 * contain "%"; it may come from anywhere, which is why they have no format attribute.
 * @{ */
#ifndef DEVFACTS_PLATFORM_CFG_STORE_H
#define DEVFACTS_PLATFORM_CFG_STORE_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

#ifndef DEVFACTS_CFG_HANDLE
#define DEVFACTS_CFG_HANDLE
/** A store; the same type as in devfacts/product.h. */
typedef struct cfg_store *cfg_handle;
#endif

/** A walk over indices. Each function takes the iterator as its only argument. */
typedef struct cfg_iterator {
  struct cfg_iterator *(*next)(struct cfg_iterator *); /**< moves to the next index; returns the iterator to continue
                                                            with, null after the last. It releases nothing */
  int (*index)(struct cfg_iterator *);                 /**< the current index */
  void (*unused[5])(struct cfg_iterator *);            /**< not called; null in the stand-in */
  const char *(*value)(struct cfg_iterator *);         /**< the text of the current key, which belongs to the store */
} cfg_iterator;

/** Makes an empty store. @return the store, for cfg_destroy(); null without memory. */
DEVFACTS_API cfg_handle cfg_create(void);

/** Releases a store and all its texts. @param store not null; its iterators have been released. */
DEVFACTS_API void cfg_destroy(cfg_handle store);

/** Loads a file into a store. Its keys replace those of the same name; texts returned before stay valid.
 * The stand-in reads lines "key=value" that end with LF, CR LF or the end of the file. Blanks before a key are
 * skipped, a key contains no blanks, and the value is all after the first "=", blanks included. Empty lines and lines
 * that begin with "#" are skipped, and the last line of a key counts. Any other line, a key of more than 511
 * characters, a NUL byte, a file of more than 1 MiB and anything but a regular file are failures.
 * @param store no iterator of it is in use.
 * @param path the file.
 * @return negative on failure (missing, unreadable or malformed file, no memory): the store is unchanged. Anything else
 * is success. */
DEVFACTS_API int cfg_read_file(cfg_handle store, const char *path);

/** Checks for a key.
 * @param store the store.
 * @param format the key, a format (see @ref cfg_store).
 * @return non-zero if it is there. */
DEVFACTS_API int cfg_key_exists(cfg_handle store, const char *format, ...);

/** Returns a key's text.
 * @param store the store.
 * @param format the key, a format (see @ref cfg_store).
 * @return the text, which belongs to the store until cfg_destroy(); null if there is no such key. */
DEVFACTS_API const char *cfg_get(cfg_handle store, const char *format, ...);

/** Returns a key's text.
 * @param store the store.
 * @param zero always 0.
 * @param key the key itself, not a format.
 * @return as cfg_get(). */
DEVFACTS_API const char *cfg_get_value(cfg_handle store, int zero, const char *key);

/** Returns a key's text as a number.
 * The stand-in reads the decimal number at its start: white space and a sign are allowed, text after it is ignored.
 * A negative number is returned as its two's complement. A number outside -2^31 to 2^32 - 1 becomes the nearer limit.
 * @param store the store.
 * @param zero always 0.
 * @param key the key itself, not a format.
 * @return the number; in the stand-in 0 if there is no number or no such key. */
DEVFACTS_API uint32_t cfg_get_uint32_value(cfg_handle store, int zero, const char *key);

/** Returns a key's text as a truth value. In the stand-in "1", "true", "yes", "on" and "enabled" are true, in any
 * mixture of upper and lower case, and all else is false.
 * @param store the store.
 * @param zero always 0.
 * @param key the key itself, not a format.
 * @return non-zero if true (1 in the stand-in); 0 if not or if there is no such key. */
DEVFACTS_API uint32_t cfg_get_bool_value(cfg_handle store, int zero, const char *key);

/** Starts a walk over all indices I with a key PREFIX.I.SUFFIX.
 * The stand-in walks in ascending order. An index is a decimal number of type int without sign or leading zeros.
 * @param store the store.
 * @param prefix the key before the index; it may contain dots and indices.
 * @param suffix the key after the index; it may contain dots and indices.
 * @return an iterator at the first index; this pointer is for cfg_free_iterator(). Null if there is no such key or no
 * memory. */
DEVFACTS_API cfg_iterator *cfg_create_index_iterator(cfg_handle store, const char *prefix, const char *suffix);

/** Releases an iterator, at any index. @param iterator what cfg_create_index_iterator() returned; null does nothing. */
DEVFACTS_API void cfg_free_iterator(cfg_iterator *iterator);

DEVFACTS_END_DECLS

/** @} */

#endif
