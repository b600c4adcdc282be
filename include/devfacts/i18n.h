/*
 * devfacts/i18n.h - interface texts from a message catalogue in the language of the device.
 *
 * A catalogue is a text file in the .po form, read anew by each call; nothing is kept but its path. Use one thread at a
 * time. Nothing here prints, logs or ends the process.
 */
#ifndef DEVFACTS_I18N_H
#define DEVFACTS_I18N_H

#include <devfacts/api.h>
#include <libintl.h>

/* Under optimisation the C library's header replaces the name by a call of another of its functions. */
#undef gettext

DEVFACTS_BEGIN_DECLS

/**
 * Chooses the catalogue DIRECTORY/LANGUAGE/CATALOGUE.po for all later gettext() calls of the process. It does not have
 * to be there yet.
 *
 * The language is the first line of /etc/lang up to its first white space (as trimr_string() knows it), read now: it is
 * empty where the line starts with one, and its first 4095 characters count. A path is cut at 4095 characters.
 *
 * @param catalogue name of the catalogue, without its ".po".
 * @param base_dir the directory.
 * @return 0; -1 where /etc/lang cannot be read or is empty: the choice stays as it was.
 */
DEVFACTS_API int set_po_access_path(const char *catalogue, const char *base_dir);

/**
 * Translates a text: the first line that is just `msgid "ID"`, up to its first carriage return, is its entry, and on
 * the line behind it stands `msgstr "TRANSLATION"`, with anything in front and behind.
 *
 * Bytes mean themselves: an escape is no escape, so that a translation ends at its first double quote, and its
 * backslashes stay. An entry that continues on further lines, plural forms and contexts are not understood; a
 * translation that is empty on its line is the empty text. Lines count up to 4095 characters, what is behind them as a
 * line of its own, so that a line whose id has 4088 characters needs no closing quote, and a longer id has no entry.
 *
 * A program that includes libintl.h, too, in either order, calls this function: it has the C library's own declaration,
 * and takes its place in the whole process, for libraries that call it by its name as well. The C library's texts of
 * its own, such as errors, do not come from here. errno stays as it was.
 *
 * @param msgid the text, not null; it may be an earlier result.
 * @return the translation, or a copy of @p msgid, cut at 4095 characters: where no catalogue was chosen, it cannot be
 * read or lacks the text, and where the line behind has no whole `msgstr "TRANSLATION"`. It belongs to the library, is
 * not to be freed or changed, and is good until the next call.
 */
DEVFACTS_API char *gettext(const char *msgid) DEVFACTS_NOTHROW; /* NOLINT(readability-redundant-declaration) */

DEVFACTS_END_DECLS

#endif
