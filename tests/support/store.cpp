#include "store.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "faults.h"
#include "product/cfg_store.h"

namespace {

std::string calls;

std::string noted(const std::string &operation, const std::string &what = "") {
  calls += operation + (what.empty() ? "" : " ") + what + "\n";
  return what;
}

std::string formatted(const char *format, va_list values) {
  char key[4096];
  std::vsnprintf(key, sizeof key, format, values);
  return key;
}

}  // namespace

// The library's undefined name x is test_x here; a call of cfg_create or cfg_read_file can be made to fail.
extern "C" {

cfg_handle test_cfg_create() { return noted("create"), test::strikes("cfg_create") ? nullptr : cfg_create(); }

void test_cfg_destroy(cfg_handle store) { noted("destroy"), cfg_destroy(store); }

int test_cfg_read_file(cfg_handle store, const char *path) { return cfg_read_file(store, noted("read", path).c_str()); }

int test_cfg_key_exists(cfg_handle store, const char *format, ...) {
  va_list values;
  va_start(values, format);
  const std::string key = noted("exists", formatted(format, values));
  va_end(values);
  return cfg_key_exists(store, key.c_str());
}

const char *test_cfg_get(cfg_handle store, const char *format, ...) {
  va_list values;
  va_start(values, format);
  const std::string key = noted("get", formatted(format, values));
  va_end(values);
  return cfg_get(store, key.c_str());
}

const char *test_cfg_get_value(cfg_handle store, int zero, const char *key) {
  noted("string", key);
  return test::strikes("cfg_get_value") ? nullptr : cfg_get_value(store, zero, key);
}

uint32_t test_cfg_get_uint32_value(cfg_handle store, int zero, const char *key) {
  return cfg_get_uint32_value(store, zero, noted("u32", key).c_str());
}

// Another truth than the stand-in's, which has 1 alone.
uint32_t test_cfg_get_bool_value(cfg_handle store, int zero, const char *key) {
  return cfg_get_bool_value(store, zero, noted("bool", key).c_str()) * 0x80000000U;
}

cfg_iterator *test_cfg_create_index_iterator(cfg_handle store, const char *prefix, const char *suffix) {
  noted("walk", std::string(prefix) + " " + suffix);
  return cfg_create_index_iterator(store, prefix, suffix);
}

void test_cfg_free_iterator(cfg_iterator *iterator) {
  noted("free", iterator == nullptr ? "null" : "");
  cfg_free_iterator(iterator);
}
}

std::string test::asked() { return std::exchange(calls, ""); }
