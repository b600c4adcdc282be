#include "platform/builtin/key_table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <utility>

#include "core/text.h"

using namespace devfacts;

namespace {

// Anyone who can write a file chooses its size and keys. These limits bound the memory and the time that one takes.
constexpr off_t max_file_size = off_t{1024} * 1024;
constexpr ptrdiff_t max_key_length = 511;

// Opened without waiting, so that a pipe is refused like anything else that is not a regular file.
unique_fd open_file(const char *path, size_t &size) {
  unique_fd file{open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
  struct stat status;
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  if (status.st_size > max_file_size) return {};
  size = static_cast<size_t>(status.st_size);
  return file;
}

// No index has a second spelling.
bool parse_index(const char *text, const char *end, int &index) {
  if (*text == '-' || (*text == '0' && end - text > 1)) return false;
  const auto [behind, error] = std::from_chars(text, end, index);
  return error == std::errc{} && behind == end;
}

template <class Visitor>
void for_each_index(const char *key, const char *value, Visitor visit) {
  const char *const end = key + std::strlen(key);
  const char *dot = std::strchr(key, '.');
  while (dot != nullptr) {
    const char *const next = std::strchr(dot + 1, '.');
    int index = 0;
    if (next != nullptr && parse_index(dot + 1, next, index)) {
      visit(indexed_value{{{{key, dot}}, {{next + 1, end}}, index}, value});
    }
    dot = next;
  }
}

}  // namespace

key_table::~key_table() {
  while (texts_ != nullptr) std::free(std::exchange(texts_, texts_->older));
}

// Everything is made beside the old content, and replaces it only when nothing can fail any more.
bool key_table::load(const char *path) {
  malloc_ptr<file_text> text = read(path);
  if (!text || std::memchr(text->bytes(), '\0', text->size) != nullptr) return false;
  array<entry> entries;
  const auto line_ends = std::count(text->bytes(), text->bytes() + text->size, '\n');
  if (!entries.reserve(entries_.count + static_cast<size_t>(line_ends) + 1)) return false;
  for (const entry &each : entries_.all()) entries.append({each.key, each.value, entries.count});
  if (!take_lines(*text, entries)) return false;
  sort(entries);
  array<indexed_value> indices;
  if (!collect_indices(entries, indices)) return false;

  text->older = texts_;
  texts_ = text.release();
  entries_ = std::move(entries);
  indices_ = std::move(indices);
  return true;
}

// A buffer for so many bytes and a NUL.
bool key_table::grow(malloc_ptr<file_text> &text, size_t capacity) {
  auto *grown = static_cast<file_text *>(std::realloc(text.get(), sizeof(file_text) + capacity + 1));
  if (grown == nullptr) return false;
  static_cast<void>(text.release());
  text.reset(grown);
  return true;
}

// The file and a NUL. Its size is only the first guess: it may grow, and files of the kernel report 0.
malloc_ptr<key_table::file_text> key_table::read(const char *path) {
  size_t capacity = 0;
  const unique_fd file = open_file(path, capacity);
  if (!file) return nullptr;
  ++capacity;
  malloc_ptr<file_text> text{static_cast<file_text *>(std::malloc(sizeof(file_text) + capacity + 1))};
  if (!text) return nullptr;
  text->size = 0;
  for (;;) {
    const ssize_t got = ::read(file.get(), text->bytes() + text->size, capacity - text->size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return nullptr;
    if (got == 0) break;
    text->size += static_cast<size_t>(got);
    if (text->size > max_file_size) return nullptr;
    if (text->size == capacity && !grow(text, capacity *= 2)) return nullptr;
  }
  text->bytes()[text->size] = '\0';
  return text;
}

// Splits a line in place; false if it is neither an entry nor a line to skip.
bool key_table::take_line(char *line, char *end, array<entry> &entries) {
  if (end != line && end[-1] == '\r') --end;
  *end = '\0';
  while (is_space(*line)) ++line;
  if (*line == '\0' || *line == '#') return true;
  char *key_end = line;
  while (*key_end != '\0' && *key_end != '=' && !is_space(*key_end)) ++key_end;
  if (key_end == line || *key_end != '=' || key_end - line > max_key_length) return false;
  *key_end = '\0';
  entries.append({line, key_end + 1, entries.count});
  return true;
}

bool key_table::take_lines(file_text &text, array<entry> &entries) {
  char *const last = text.bytes() + text.size;
  for (char *line = text.bytes(); line < last;) {
    char *end = std::find(line, last, '\n');
    if (!take_line(line, end, entries)) return false;
    line = end + 1;
  }
  return true;
}

// Keeps only the last line of each key.
void key_table::sort(array<entry> &entries) {
  std::ranges::sort(entries.all(), [](const entry &a, const entry &b) {
    const int order = std::strcmp(a.key, b.key);
    return order != 0 ? order < 0 : a.order < b.order;
  });
  entry *const rows = entries.rows.get();
  size_t kept = 0;
  for (const entry &each : entries.all()) {
    if (kept != 0 && std::strcmp(rows[kept - 1].key, each.key) == 0) --kept;
    rows[kept++] = each;
  }
  entries.count = kept;
}

bool key_table::collect_indices(const array<entry> &entries, array<indexed_value> &indices) {
  size_t count = 0;
  for (const entry &each : entries.all()) for_each_index(each.key, each.value, [&](const auto &) { ++count; });
  if (count == 0) return true;
  if (!indices.reserve(count)) return false;
  for (const entry &each : entries.all()) {
    for_each_index(each.key, each.value, [&](const indexed_value &found) { indices.append(found); });
  }
  std::ranges::sort(indices.all(), {}, &indexed_value::at);
  return true;
}

const char *key_table::find(const char *key) const {
  const auto entries = entries_.all();
  const auto before = [](const char *a, const char *b) { return std::strcmp(a, b) < 0; };
  const auto found = std::ranges::lower_bound(entries, key, before, &entry::key);
  return found != entries.end() && std::strcmp(found->key, key) == 0 ? found->value : nullptr;
}

std::span<const indexed_value> key_table::find_indices(std::string_view prefix, std::string_view suffix) const {
  const auto indices = indices_.all();
  const place first_place{{prefix}, {suffix}, 0};
  const place last_place{{prefix}, {suffix}, INT_MAX};
  const auto first = std::ranges::lower_bound(indices, first_place, {}, &indexed_value::at);
  return {first, std::ranges::upper_bound(first, indices.end(), last_place, {}, &indexed_value::at)};
}
