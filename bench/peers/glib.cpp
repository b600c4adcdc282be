#include <glib.h>

#include <cstdio>

#include "fields.h"
#include "peers.h"

namespace {

void put_text(GString *document, const char *name, const char *value) {
  char *line = g_markup_printf_escaped("  <%s>%s</%s>\n", name, value, name);
  g_string_append(document, line);
  g_free(line);
}

void put_interface(GString *document, const ifi_entry *entry) {
  g_string_append(document, " <interface>\n");
  bench::for_each_item(
      entry, [=](const char *name, const char *value) { put_text(document, name, value); },
      [=](const char *name, uint32_t value) {
        g_string_append_printf(document, "  <%s>%u</%s>\n", name, value, name);
      });
  g_string_append(document, " </interface>\n");
}

}  // namespace

void bench::print_with_glib() {
  GString *document = g_string_new("<netstats>\n");
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    put_interface(document, reinterpret_cast<ifi_entry *>(link));
  }
  g_string_append(document, "</netstats>\n");
  std::fwrite(document->str, 1, document->len, stdout);
  g_string_free(document, TRUE);
  std::fflush(stdout);
}
