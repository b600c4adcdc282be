/* A program with the C library's header beside ours, after it or (TEXTS_LIBINTL_FIRST) before it: gettext is ours, and
   the C library still translates its own texts. */
#ifdef TEXTS_LIBINTL_FIRST
#include <libintl.h>
#endif
#include <devfacts/i18n.h>
#include <errno.h>
#include <libintl.h>
#include <locale.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

int main(int count, char **words) {
  const char *id = "text", *translated = gettext(id);
  if (translated == id || strcmp(translated, id) != 0) return puts("the C library's gettext"), 1;
  setlocale(LC_ALL, "");
  fprintf(stderr, "%s\n", strerror(ENOENT));
  return getopt(count, words, "a") == '?' && strcmp(translated, id) == 0 ? 0 : 1;
}
