// Files of "key: value" lines.
#include <devfacts/core.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/line_reader.h"
#include "core/number.h"
#include "core/owner.h"
#include "core/text.h"

using namespace devfacts;

namespace {

constexpr int line_size = 1024;

// The first "=" or ":" of the line; its end if it has neither.
char *find_mark(char *line) {
  while (*line != '\0' && *line != '=' && *line != ':') ++line;
  return line;
}

// What a walk wants of each line.
struct walk {
  const char *prefix;
  iterate_callback callback;
  void *context;

  bool wants(const char *line) const { return prefix == nullptr || starts_with(line, prefix); }

  // Splits the line and hands it to the callback; false ends the walk.
  bool take(char *line) const {
    char *key = skip_space(line);
    if (!wants(key)) return true;
    char *separator = find_mark(key);
    const bool has_mark = *separator != '\0';
    cut_space(key, separator + std::strlen(separator));
    if (*key == '\0' || !wants(key)) return true;
    if (!has_mark) separator = std::strchr(key, ' ');
    if (separator == nullptr) return false;
    *separator = '\0';
    cut_space(key, separator);
    return callback(context, key, skip_space(separator + 1)) == 0;
  }
};

// Stores the number of a selected line and ends the walk.
template <class Number>
int store_number(void *context, const char *value) {
  auto *slot = static_cast<first_match_u32 *>(context);
  Number number;
  slot->found = parse_number(value, number) ? 1 : 0;
  slot->value = static_cast<uint32_t>(number);
  return 1;
}

// Adds a row with a copy of the value.
bool append(keyval_list *list, const char *value) {
  const auto count = static_cast<size_t>(list->count);
  void *rows = std::realloc(count == 0 ? nullptr : list->rows, (count + 1) * sizeof(keyval_entry));
  if (rows == nullptr) return false;
  list->rows = static_cast<keyval_entry *>(rows);
  keyval_entry &row = list->rows[list->count++];
  row.length = static_cast<uint32_t>(std::strlen(value));
  row.value = static_cast<char *>(std::calloc(row.length + 1, 1));
  if (row.value == nullptr) return false;
  std::memcpy(row.value, value, row.length);
  return true;
}

// Without memory the list becomes empty and the walk ends.
int collect(void *context, char * /*key*/, char *value) {
  auto *list = static_cast<keyval_list *>(context);
  if (append(list, value)) return 0;
  keyval_destroy(list);
  list->rows = nullptr;
  return 1;
}

}  // namespace

void iterate_raw(FILE *stream, const char *prefix, iterate_callback callback, void *context) {
  if (callback == nullptr || stream == nullptr) return;
  std::rewind(stream);
  const walk lines{prefix, callback, context};
  char line[line_size];
  // No other thread uses the stream, so no lock for each line is needed.
  while (feof_unlocked(stream) == 0 && fgets_unlocked(line, line_size, stream) != nullptr && lines.take(line)) {
  }
}

void iterate(const char *path, const char *prefix, iterate_callback callback, void *context) {
  line_reader file(path, line_size - 1);
  if (callback == nullptr) return;
  const walk lines{prefix, callback, context};
  while (char *line = file.next()) {
    if (!lines.take(line)) return;
  }
}

int __return_first_match_in_u32(void *context, char * /*key*/, char *value) {
  return store_number<uint32_t>(context, value);
}

int __return_first_match_in_i32(void *context, char * /*key*/, char *value) {
  return store_number<int32_t>(context, value);
}

int __return_first_match_in_string(void *context, char * /*key*/, char *value) {
  auto *slot = static_cast<first_match_string *>(context);
  slot->value = strdup(value);
  slot->found = slot->value != nullptr ? 1 : 0;
  return 1;
}

void keyvalue(const char *path, const char *prefix, keyval_list *list) {
  if (list == nullptr) return;
  list->count = 0;
  iterate(path, prefix, collect, list);
}

void keyval_destroy(keyval_list *list) {
  if (list == nullptr || list->count == 0) return;
  for (int32_t i = 0; i < list->count; ++i) std::free(list->rows[i].value);
  std::free(list->rows);
  list->count = 0;
  list->rows = nullptr;
}
