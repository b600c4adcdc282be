// The capability object, filled once from a store of its own.
#include <devfacts/product.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "core/owner.h"
#include "platform/cfg_store.h"
#include "product/capability_tables.h"
#include "product/product_file.h"

using namespace devfacts;

constinit product_caps_t product_caps{};

namespace {

using unique_store = std::unique_ptr<cfg_store, release_with<cfg_destroy>>;

// A formatted key, cut if it does not fit.
struct key_text {
  char text[512];

  DEVFACTS_PRINTF(2, 3) explicit key_text(const char *format, ...) {
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
  }
};

void *at(void *record, size_t offset) { return static_cast<char *>(record) + offset; }

// The getters are called for keys that exist. Their slot is all zero before, which means absent, and its padding stays
// so.
void get_string(caps_string &slot, cfg_handle cfg, const char *key) {
  const char *text = cfg_get_value(cfg, 0, key);
  if (text == nullptr) return;
  const size_t size = std::strlen(text) + 1;
  slot.value = static_cast<char *>(std::malloc(size));
  if (slot.value == nullptr) return;
  std::memcpy(slot.value, text, size);
  slot.present = 1;
}

template <class Slot>
void set_word(Slot &slot, uint32_t value) {
  slot.value = value;
  slot.present = 1;
}

void get_field(void *record, const caps_field &field, cfg_handle cfg, const char *prefix) {
  const key_text key{"%s.%s", prefix, field.name.text()};
  if (cfg_key_exists(cfg, key.text) == 0) return;
  void *slot = at(record, field.offset);
  switch (field.type) {
    case slot_type::string: return get_string(*static_cast<caps_string *>(slot), cfg, key.text);
    case slot_type::u32: return set_word(*static_cast<caps_u32 *>(slot), cfg_get_uint32_value(cfg, 0, key.text));
    case slot_type::boolean: return set_word(*static_cast<caps_bool *>(slot), cfg_get_bool_value(cfg, 0, key.text));
  }
}

// The rows of a list while they are read or released.
struct row_array {
  void *rows = nullptr;
  int32_t count = 0;

  void *row(const caps_list &list, int32_t n) const { return at(rows, static_cast<size_t>(n) * list.row_size); }

  // A new row, all zero; null without memory.
  void *add(const caps_list &list) {
    void *grown = std::realloc(rows, (static_cast<size_t>(count) + 1) * list.row_size);
    if (grown == nullptr) return nullptr;
    rows = grown;
    return std::memset(row(list, count++), 0, list.row_size);
  }

  void keep_in(void *owner, const caps_list &list) const {
    std::memcpy(at(owner, list.count_at), &count, sizeof count);
    std::memcpy(at(owner, list.rows_at), &rows, sizeof rows);
  }

  static row_array kept_in(void *owner, const caps_list &list) {
    row_array array;
    std::memcpy(&array.count, at(owner, list.count_at), sizeof array.count);
    std::memcpy(&array.rows, at(owner, list.rows_at), sizeof array.rows);
    return array;
  }

  // Releases the rows with all they own.
  // NOLINTNEXTLINE(misc-no-recursion): a list in a list is as deep as it goes
  void drop(const caps_list &list) {
    for (; count != 0; --count) {
      void *last = row(list, count - 1);
      for (const caps_field &field : list.fields) {
        if (field.type == slot_type::string) std::free(static_cast<caps_string *>(at(last, field.offset))->value);
      }
      if (list.inner != nullptr) kept_in(last, *list.inner).drop(*list.inner);
    }
    std::free(std::exchange(rows, nullptr));
  }
};

void load_list(void *owner, const caps_list &list, cfg_handle cfg, const char *prefix);

// NOLINTBEGIN(misc-no-recursion): a list in a list is as deep as it goes
void load_row(void *row, const caps_list &list, cfg_handle cfg, const char *prefix) {
  for (const caps_field &field : list.fields) get_field(row, field, cfg, prefix);
  if (list.inner != nullptr) {
    load_list(row, *list.inner, cfg, key_text{"%s.%s", prefix, list.inner_name.text()}.text);
  }
  if (list.finish != nullptr) list.finish(row);
}

// Without memory for a row the whole list goes and the walk ends.
void load_list(void *owner, const caps_list &list, cfg_handle cfg, const char *prefix) {
  row_array array;
  cfg_iterator *const first = cfg_create_index_iterator(cfg, prefix, list.suffix.text());
  for (cfg_iterator *walk = first; walk != nullptr; walk = walk->next(walk)) {
    const int index = walk->index(walk);
    void *row = array.add(list);
    if (row == nullptr) {
      array.drop(list);
      break;
    }
    load_row(row, list, cfg, key_text{"%s.%d", prefix, index}.text);
  }
  cfg_free_iterator(first);
  array.keep_in(owner, list);
}

// NOLINTEND(misc-no-recursion)

void load(cfg_handle cfg) {
  product_caps.loaded = 1;  // from here on parts can be missing, but nothing fails as a whole
  for (const caps_section &section : caps_sections) {
    for (const caps_field &field : section.fields) get_field(&product_caps, field, cfg, section.prefix.text());
    if (section.list != nullptr) load_list(&product_caps, *section.list, cfg, section.prefix.text());
  }
}

}  // namespace

product_caps_t *product_caps_get() {
  if (product_caps.loaded == 0) {
    const unique_store store{cfg_create()};
    if (store && cfg_read_file(store.get(), product_file) >= 0) load(store.get());
  }
  return product_caps.loaded == 1 ? &product_caps : nullptr;
}
