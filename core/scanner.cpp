// Texts of "key: value" lines.
#include <devfacts/core.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/number.h"
#include "core/owner.h"
#include "core/text.h"

using namespace devfacts;

namespace {

constexpr int line_size = 1024;

// The first "=" or ":" of the line, or else its first blank; null where it has none of them.
char *find_separator(char *line, char *end) {
  const auto find = [=](char byte, const char *limit) {
    return static_cast<char *>(std::memchr(line, byte, static_cast<size_t>(limit - line)));
  };
  char *equals = find('=', end);
  char *colon = find(':', equals != nullptr ? equals : end);
  if (colon != nullptr) return colon;
  return equals != nullptr ? equals : find(' ', end);
}

// Gives the pairs of a stream one by one. They lie in its buffer and stay until the next.
class line_scanner {
 public:
  char *key = nullptr;
  char *value = nullptr;

  // cppcheck-suppress uninitMemberVar  ; the buffer is read after it is filled
  line_scanner(FILE *stream, const char *prefix)
      : stream_(stream), prefix_(prefix != nullptr ? prefix : ""), prefix_length_(std::strlen(prefix_)) {}

  // False at the end, and at a line that cannot be split.
  bool next() {
    // The stream is this thread's alone, so it needs no lock for each line.
    while (feof_unlocked(stream_) == 0 && fgets_unlocked(buffer_, line_size, stream_) != nullptr) {
      key = triml_string(buffer_);
      char *end = key + std::strlen(key);
      cut_space(key, end);
      if (*key != '\0' && has_prefix()) return split(end);
    }
    return false;
  }

 private:
  bool has_prefix() const { return prefix_length_ == 0 || std::strncmp(key, prefix_, prefix_length_) == 0; }

  // The line stands at key and has no white space at its ends.
  bool split(char *end) {
    char *separator = find_separator(key, end);
    if (separator == nullptr) return false;
    *separator = '\0';
    cut_space(key, separator);
    value = triml_string(separator + 1);
    return true;
  }

  FILE *stream_;
  const char *prefix_;
  size_t prefix_length_;
  char buffer_[line_size];
};

void walk(FILE *stream, const char *prefix, iterate_callback callback, void *context) {
  line_scanner lines(stream, prefix);
  while (lines.next() && callback(context, lines.key, lines.value) == 0) {
  }
}

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
  walk(stream, prefix, callback, context);
}

void iterate(const char *path, const char *prefix, iterate_callback callback, void *context) {
  const unique_file file{std::fopen(path, "re")};
  if (file && callback != nullptr) walk(file.get(), prefix, callback, context);
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
