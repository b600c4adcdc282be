// The keys of configuration files, sorted when they are read, and a second table of the indices in them.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <span>
#include <string_view>

#include "core/owner.h"

namespace devfacts {

// A part of a key. Any order serves the search; with the length first, bytes are seldom compared.
struct key_part {
  std::string_view text;

  friend bool operator==(const key_part &, const key_part &) = default;
  friend std::strong_ordering operator<=>(const key_part &a, const key_part &b) {
    if (a.text.size() != b.text.size()) return a.text.size() <=> b.text.size();
    return a.text <=> b.text;
  }
};

// The place of an index in a key: PREFIX.INDEX.SUFFIX.
struct place {
  key_part prefix;
  key_part suffix;
  int index;

  friend auto operator<=>(const place &, const place &) = default;
};

struct indexed_value {
  place at;
  const char *text;
};

class key_table {
 public:
  key_table() = default;
  key_table(const key_table &) = delete;
  key_table &operator=(const key_table &) = delete;
  ~key_table();

  // Adds the keys of a file; a later line of a key replaces an earlier one. On failure the table is unchanged.
  bool load(const char *path);

  // The key's text, valid as long as the table; null if there is no such key.
  const char *find(const char *key) const;

  // The values of PREFIX.I.SUFFIX in ascending order of I.
  std::span<const indexed_value> find_indices(std::string_view prefix, std::string_view suffix) const;

 private:
  struct entry {
    const char *key;
    const char *value;
    size_t order;  // of the lines
  };

  // The content of one file; keys and values point into it.
  struct file_text {
    file_text *older;
    size_t size;
    char *bytes() { return reinterpret_cast<char *>(this + 1); }
  };

  // An array of a size known before.
  template <class T>
  struct array {
    malloc_ptr<T> rows;
    size_t count = 0;

    bool reserve(size_t capacity) {
      if (capacity <= PTRDIFF_MAX / sizeof(T)) rows.reset(static_cast<T *>(std::malloc(capacity * sizeof(T))));
      return rows != nullptr;
    }
    void append(const T &row) { new (rows.get() + count++) T(row); }
    std::span<T> all() const { return {rows.get(), count}; }
  };

  static bool grow(malloc_ptr<file_text> &text, size_t capacity);
  static malloc_ptr<file_text> read(const char *path);
  static bool take_line(char *line, char *end, array<entry> &entries);
  static bool take_lines(file_text &text, array<entry> &entries);
  static void sort(array<entry> &entries);
  static bool collect_indices(const array<entry> &entries, array<indexed_value> &indices);

  file_text *texts_ = nullptr;
  array<entry> entries_;
  array<indexed_value> indices_;
};

}  // namespace devfacts
