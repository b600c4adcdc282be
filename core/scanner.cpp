// Texts of "key: value" lines.
#include <devfacts/core.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/number.h"
#include "core/owner.h"

using namespace devfacts;

namespace {

constexpr int line_size = 1024;

// At the first "=" or ":" of the line, or else at its first blank; null where it has none of them.
char *find_separator(char *line) {
  char *at = line;
  while (*at != '=' && *at != ':' && *at != '\0') ++at;
  return *at != '\0' ? at : std::strchr(line, ' ');
}

// Gives the pairs of a stream one by one. They lie in its buffer and stay until the next.
class line_scanner {
 public:
  char *key = nullptr;
  char *value = nullptr;

  line_scanner(FILE *stream, const char *prefix)
      : stream_(stream), prefix_(prefix != nullptr ? prefix : ""), prefix_length_(std::strlen(prefix_)) {}

  // False at the end, and at a line that cannot be split.
  bool next() {
    while (std::feof(stream_) == 0 && std::fgets(buffer_, line_size, stream_) != nullptr) {
      char *line = trimr_string(triml_string(buffer_));
      if (*line != '\0' && std::strncmp(line, prefix_, prefix_length_) == 0) return split(line);
    }
    return false;
  }

 private:
  // The line has no white space at its ends.
  bool split(char *line) {
    char *separator = find_separator(line);
    if (separator == nullptr) return false;
    *separator = '\0';
    key = trimr_string(line);
    value = triml_string(separator + 1);
    return true;
  }

  FILE *stream_;
  const char *prefix_;
  size_t prefix_length_;
  char buffer_[line_size];
};

// A match stores what its value gives and ends the walk.
template <class Number>
int store_number(void *context, const char *value) {
  auto *slot = static_cast<first_match_u32 *>(context);
  Number number;
  slot->found = parse_number(value, number) ? 1 : 0;
  slot->value = static_cast<uint32_t>(number);
  return 1;
}

// One row more, with a copy of the value.
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

}  // namespace

void iterate_raw(FILE *stream, const char *prefix, iterate_callback callback, void *context) {
  if (callback == nullptr || stream == nullptr) return;
  std::rewind(stream);
  line_scanner lines(stream, prefix);
  while (lines.next() && callback(context, lines.key, lines.value) == 0) {
  }
}

void iterate(const char *path, const char *prefix, iterate_callback callback, void *context) {
  const unique_file file{std::fopen(path, "re")};
  iterate_raw(file.get(), prefix, callback, context);
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
  const unique_file file{std::fopen(path, "re")};
  if (!file) return;
  for (line_scanner lines(file.get(), prefix); lines.next();) {
    if (append(list, lines.value)) continue;
    keyval_destroy(list);
    list->rows = nullptr;
    return;
  }
}

void keyval_destroy(keyval_list *list) {
  if (list == nullptr || list->count == 0) return;
  for (int32_t i = 0; i < list->count; ++i) std::free(list->rows[i].value);
  std::free(list->rows);
  list->count = 0;
  list->rows = nullptr;
}
