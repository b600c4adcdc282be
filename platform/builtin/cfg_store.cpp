// Stands in for the device's configuration store.
#include "platform/cfg_store.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>

#include "platform/builtin/key_table.h"

using namespace devfacts;

struct cfg_store {
  key_table keys;
};

namespace {

// Keys without a conversion are looked up as they are, whatever their length.
const char *find(const cfg_store *store, const char *format, va_list values) {
  if (std::strchr(format, '%') == nullptr) return store->keys.find(format);
  char key[512];
  const int length = std::vsnprintf(key, sizeof key, format, values);
  return length >= 0 && length < static_cast<int>(sizeof key) ? store->keys.find(key) : nullptr;
}

struct index_walk {
  cfg_iterator slots;  // the first member, so that it can be cast to the walk
  std::span<const indexed_value> rest;
};

index_walk *walk_of(cfg_iterator *iterator) { return reinterpret_cast<index_walk *>(iterator); }

cfg_iterator *next_index(cfg_iterator *iterator) {
  index_walk *walk = walk_of(iterator);
  if (walk->rest.size() == 1) return nullptr;
  walk->rest = walk->rest.subspan(1);
  return iterator;
}

int index_here(cfg_iterator *iterator) { return walk_of(iterator)->rest.front().at.index; }

const char *value_here(cfg_iterator *iterator) { return walk_of(iterator)->rest.front().text; }

constexpr cfg_iterator slots{next_index, index_here, {}, value_here};

}  // namespace

cfg_handle cfg_create() {
  void *memory = std::malloc(sizeof(cfg_store));
  return memory == nullptr ? nullptr : new (memory) cfg_store;
}

void cfg_destroy(cfg_handle store) {
  store->~cfg_store();
  std::free(store);
}

int cfg_read_file(cfg_handle store, const char *path) { return store->keys.load(path) ? 0 : -1; }

int cfg_key_exists(cfg_handle store, const char *format, ...) {
  va_list values;
  va_start(values, format);
  const char *found = find(store, format, values);
  va_end(values);
  return found != nullptr ? 1 : 0;
}

const char *cfg_get(cfg_handle store, const char *format, ...) {
  va_list values;
  va_start(values, format);
  const char *found = find(store, format, values);
  va_end(values);
  return found;
}

const char *cfg_get_value(cfg_handle store, int /*zero*/, const char *key) { return store->keys.find(key); }

uint32_t cfg_get_uint32_value(cfg_handle store, int /*zero*/, const char *key) {
  const char *text = store->keys.find(key);
  if (text == nullptr) return 0;
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<uint32_t>(std::clamp<long long>(number, INT32_MIN, UINT32_MAX));
}

uint32_t cfg_get_bool_value(cfg_handle store, int /*zero*/, const char *key) {
  const char *text = store->keys.find(key);
  if (text == nullptr) return 0;
  for (const char *truth : {"1", "true", "yes", "on", "enabled"}) {
    if (strcasecmp(text, truth) == 0) return 1;
  }
  return 0;
}

cfg_iterator *cfg_create_index_iterator(cfg_handle store, const char *prefix, const char *suffix) {
  const std::span<const indexed_value> found = store->keys.find_indices(prefix, suffix);
  if (found.empty()) return nullptr;
  void *memory = std::malloc(sizeof(index_walk));
  return memory == nullptr ? nullptr : &(new (memory) index_walk{slots, found})->slots;
}

void cfg_free_iterator(cfg_iterator *iterator) { std::free(iterator); }
