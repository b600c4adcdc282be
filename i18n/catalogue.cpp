// Translations from a catalogue in the .po form.
#include <devfacts/i18n.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/line_reader.h"
#include "core/text.h"

using namespace devfacts;

namespace {

constexpr size_t text_size = 4096;
constexpr char id_start[] = "msgid \"";
constexpr char translation_start[] = "msgstr \"";

constinit char po_access_path[text_size] = "";
constinit char gettext_result[text_size] = "";

constexpr size_t max_line = text_size - 1;
constexpr size_t id_place = sizeof id_start - 1;

// The line after the id's entry; null if there is no entry. Of a longer id, only what a line can hold is compared.
const char *find_entry(line_reader &file, const char *id) {
  const size_t compared = std::min(std::strlen(id), max_line - id_place);
  if (std::strchr(id, '\r') != nullptr) return nullptr;  // no entry contains one
  while (const char *line = file.next()) {
    if (!starts_with(line, id_start) || std::strncmp(line + id_place, id, compared) != 0) continue;
    const char *end = line + id_place + compared;
    const bool is_whole = end[0] == '"' && (end[1] == '\0' || end[1] == '\r');
    if (is_whole || (end == line + max_line && std::strstr(line, id) != nullptr)) return file.next();
  }
  return nullptr;
}

// Copies a line's translation to the result, if it is complete.
void take_translation(const char *line) {
  const char *start = std::strstr(line, translation_start);
  if (start == nullptr) return;
  start += sizeof translation_start - 1;
  const char *end = std::strchr(start, '"');
  if (end == nullptr) return;
  *std::copy(start, end, gettext_result) = '\0';
}

// The result has the id already, and keeps it without a translation.
void translate_result() {
  line_reader file(po_access_path, max_line);
  const char *line = find_entry(file, gettext_result);
  if (line != nullptr) take_translation(line);
}

}  // namespace

int set_po_access_path(const char *catalogue, const char *base_dir) {
  line_reader file("/etc/lang", max_line);
  char *language = file.next();
  if (language == nullptr) return -1;
  char *end = language;
  while (*end != '\0' && !is_space(*end)) ++end;
  *end = '\0';
  // A longer path is cut; what cannot be in it is not even read.
  constexpr char form[] = "%.4095s/%s/%.4095s.po";
  return std::snprintf(po_access_path, text_size, form, base_dir, language, catalogue) > 0 ? 0 : -1;
}

char *gettext(const char *msgid) noexcept {
  const int error = errno;
  const size_t length = strnlen(msgid, text_size), kept = std::min(length, text_size - 1);
  std::memmove(gettext_result, msgid, kept);  // it may be in an earlier result
  gettext_result[kept] = '\0';
  if (length == kept) translate_result();  // one that was cut is longer than a line
  errno = error;
  return gettext_result;
}
