/** @defgroup i18n Translations
 * Interface texts in the language of the device, from a message catalogue.
 *
 * A catalogue is a text file in the .po form. Use one thread at a time. Nothing here prints, logs or ends the process.
 * Catalogues are trusted: a translation used as a format, as in printf(gettext("...")), lets whoever can write the
 * catalogue do harm. Use printf("%s", gettext("...")).
 * @{ */
#ifndef DEVFACTS_I18N_H
#define DEVFACTS_I18N_H

#include <devfacts/api.h>
#include <libintl.h>

/* With optimisation the C library's header makes this name a macro for another of its functions. */
#undef gettext

DEVFACTS_BEGIN_DECLS

/** Chooses the catalogue of all later calls of gettext(): BASE_DIR/LANGUAGE/CATALOGUE.po.
 * LANGUAGE is the first line of /etc/lang up to its first white space, as it is now: call this function again after
 * a change. The catalogue need not exist. A line or path is cut at 4095 bytes.
 * @param catalogue name of the catalogue without ".po".
 * @param base_dir the folder.
 * @return 0; -1 if /etc/lang cannot be read or is empty: the choice stays as it was. */
DEVFACTS_API int set_po_access_path(const char *catalogue, const char *base_dir);

/** Translates a text.
 * Its entry is the first line that is exactly `msgid "ID"`; the next line has the translation, as `msgstr "TEXT"` up to
 * the next quotation mark. Backslashes have no meaning. Contexts and plural forms are not known, and of a text that
 * continues on further lines the first counts. With `msgstr ""`, also of an entry not yet translated, the result is the
 * empty text, not the id. A line longer than 4095 bytes is read as several lines. An id longer than 4088 bytes is never
 * found.
 *
 * This function has the C library's declaration and takes its place in the whole process, for other libraries, too. The
 * messages of the C library itself do not come from here. errno is preserved.
 * @param msgid the text, not null. It may be an earlier result.
 * @return the translation; a copy of @p msgid, cut at 4095 bytes, if no catalogue was chosen, or if it cannot be
 * read or has no whole entry. It belongs to the library and is overwritten by the next call: two results in one
 * printf() are the same text.
 * @par Cost
 * Each call reads the catalogue up to the entry: 500 entries take some 300,000 instructions on the device, roughly 1 ms
 * at 384 MHz, without the kernel's work. 5 KiB of stack. */
DEVFACTS_API char *gettext(const char *msgid) DEVFACTS_NOTHROW; /* NOLINT(readability-redundant-declaration) */

DEVFACTS_END_DECLS

/** @} */

#endif
