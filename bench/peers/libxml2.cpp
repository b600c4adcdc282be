#include <libxml/xmlwriter.h>

#include <cstdio>

#include "fields.h"
#include "peers.h"

namespace {

const xmlChar *text(const char *value) { return reinterpret_cast<const xmlChar *>(value); }

void write_interface(xmlTextWriterPtr writer, const ifi_entry *entry) {
  xmlTextWriterStartElement(writer, text("interface"));
  bench::for_each_item(
      entry, [&](const char *name, const char *value) { xmlTextWriterWriteElement(writer, text(name), text(value)); },
      [&](const char *name, uint32_t value) { xmlTextWriterWriteFormatElement(writer, text(name), "%u", value); });
  xmlTextWriterEndElement(writer);
}

}  // namespace

void bench::print_with_libxml2() {
  xmlTextWriterPtr writer = xmlNewTextWriter(xmlOutputBufferCreateFile(stdout, nullptr));
  xmlTextWriterSetIndent(writer, 1);
  xmlTextWriterStartElement(writer, text("netstats"));
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    write_interface(writer, reinterpret_cast<ifi_entry *>(link));
  }
  xmlTextWriterEndDocument(writer);
  xmlFreeTextWriter(writer);
  std::fflush(stdout);
}
