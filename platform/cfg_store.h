/*
 * platform/cfg_store.h - what is asked of the configuration store, a library of the device's firmware.
 * platform/builtin/cfg_store.cpp stands in for it.
 *
 * A store maps dotted keys ("radio.0.master") to texts. Use one store from one thread at a time. No operation prints.
 */
#ifndef DEVFACTS_PLATFORM_CFG_STORE_H
#define DEVFACTS_PLATFORM_CFG_STORE_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** A store; the same type as in devfacts/product.h. */
typedef struct cfg_store *cfg_handle;

/** A walk over indices, made by cfg_create_index_iterator(). Each slot takes the iterator as its only argument. */
typedef struct cfg_iterator {
  /** Moves to the following index; returns the iterator to go on with, null when none is left. It releases nothing. */
  struct cfg_iterator *(*next)(struct cfg_iterator *);
  /** The index at which the iterator stands. */
  int (*index)(struct cfg_iterator *);
  /** Never called by us; the stand-in has nulls here. */
  void (*unused[5])(struct cfg_iterator *);
  /** The text of the key at which the iterator stands; it belongs to the store. */
  const char *(*value)(struct cfg_iterator *);
} cfg_iterator;

/**
 * @return a new, empty store, which the caller ends with cfg_destroy(); null without memory.
 */
DEVFACTS_API cfg_handle cfg_create(void);

/**
 * Ends a store, and with it every text that it gave out. Its iterators are released before.
 *
 * @param store not null.
 */
DEVFACTS_API void cfg_destroy(cfg_handle store);

/**
 * Loads a file. Texts that the store gave out before stay good; what it held stays, where the file does not replace it.
 *
 * The stand-in reads lines "dotted.key=value", ended by LF, by the end of the file, or by either with a CR
 * before it. Blanks before a key are
 * passed over, a key holds none, and the value is all that follows the first "=", blanks included. Blank lines are
 * passed over, and lines whose first other character is "#"; a later line of a key replaces an earlier one. Any other
 * line, a NUL byte and anything but a regular file make the load fail.
 *
 * @param store no iterator of it is in use.
 * @param path the file.
 * @return negative on failure (no such file, unreadable, malformed, no memory): the store holds what it held before.
 * Anything else is success.
 */
DEVFACTS_API int cfg_read_file(cfg_handle store, const char *path);

/*
 * The next two take a key as a printf-style format with its values, or a finished key that holds no '%'; the latter is
 * why they carry no mark for the compiler's format check. In the stand-in a key that needs formatting has at most 1023
 * characters, a longer one is not there; a finished key may have any length.
 */

/**
 * @return non-zero if the key is there.
 */
DEVFACTS_API int cfg_key_exists(cfg_handle store, const char *format, ...);

/**
 * @return the key's text, which belongs to the store and stays until cfg_destroy(); null for a key that is not there.
 */
DEVFACTS_API const char *cfg_get(cfg_handle store, const char *format, ...);

/**
 * @param store the store.
 * @param zero always 0.
 * @param key a finished key.
 * @return as cfg_get().
 */
DEVFACTS_API const char *cfg_get_value(cfg_handle store, int zero, const char *key);

/**
 * The key's text as a number. The stand-in takes the decimal number at its start, white space and a sign allowed; text
 * behind it is ignored. A negative number comes as its two's complement, so that a cast to int32_t gives it back.
 * Beyond -2^31 and 2^32 - 1 it is cut to these.
 *
 * @param store the store.
 * @param zero always 0.
 * @param key a finished key.
 * @return the number; in the stand-in 0 for a text without one and for a key that is not there.
 */
DEVFACTS_API uint32_t cfg_get_uint32_value(cfg_handle store, int zero, const char *key);

/**
 * The key's text as a truth value. For the stand-in "1", "true", "yes", "on" and "enabled" are true, in any case of
 * letters.
 *
 * @param store the store.
 * @param zero always 0.
 * @param key a finished key.
 * @return the truth value; in the stand-in 1 or 0, and 0 for any other text and for a key that is not there.
 */
DEVFACTS_API uint32_t cfg_get_bool_value(cfg_handle store, int zero, const char *key);

/**
 * Starts a walk over every index I for which the key PREFIX.I.SUFFIX is there.
 *
 * The stand-in walks in ascending order. An index is a decimal number that an int holds, without sign or leading zeros.
 * The cost is that of a search, however many other keys or indices there are.
 *
 * @param store the store.
 * @param prefix text before the index, which may hold dots and indices itself.
 * @param suffix text behind it, likewise.
 * @return an iterator that stands at the first index, and that the caller ends with cfg_free_iterator(); null where
 * there is no such key, and without memory.
 */
DEVFACTS_API cfg_iterator *cfg_create_index_iterator(cfg_handle store, const char *prefix, const char *suffix);

/**
 * Releases an iterator, wherever its walk stands.
 *
 * @param iterator what cfg_create_index_iterator() returned; null does nothing.
 */
DEVFACTS_API void cfg_free_iterator(cfg_iterator *iterator);

DEVFACTS_END_DECLS

#endif
