// Translations from a catalogue in the .po form.
#include <devfacts/i18n.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/owner.h"
#include "core/text.h"

using namespace devfacts;

namespace {

constexpr size_t text_size = 4096;
constexpr char id_start[] = "msgid \"";
constexpr char translation_start[] = "msgstr \"";

constinit char po_access_path[text_size] = "";
constinit char gettext_result[text_size] = "";

// No other thread uses these streams, so no lock for each line is needed.
bool read_line(char (&line)[text_size], FILE *file) { return fgets_unlocked(line, text_size, file) != nullptr; }

// Moves on to the line after the id's entry.
bool find_entry(FILE *file, const char *id, char (&line)[text_size]) {
  char wanted[text_size];
  const auto length = static_cast<size_t>(std::snprintf(wanted, text_size, "%s%s\"", id_start, id));
  while (read_line(line, file)) {
    // The start excludes most lines; an id too long for its line is never found.
    if (std::strncmp(line, wanted, length) != 0 || std::strstr(line, id) == nullptr) continue;
    line[std::strcspn(line, "\r")] = '\0';
    line[std::strcspn(line, "\n")] = '\0';
    if (std::strcmp(line, wanted) == 0) return read_line(line, file);
  }
  return false;
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
  const unique_file file{std::fopen(po_access_path, "re")};
  char line[text_size];
  if (file && find_entry(file.get(), gettext_result, line)) take_translation(line);
}

}  // namespace

int set_po_access_path(const char *catalogue, const char *base_dir) {
  const unique_file file{std::fopen("/etc/lang", "re")};
  char language[text_size];
  if (!file || !read_line(language, file.get())) return -1;
  *std::find_if(language, language + std::strlen(language), is_space) = '\0';
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
