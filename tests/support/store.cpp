#include <utility>

#include "platform/cfg_store.h"
#include "test.h"

static std::string calls;

static const char *noted(const std::string &operation, const char *what) {
  calls += operation + what + "\n";
  return what;
}

// The library's undefined name x is test_x here; some can be made to fail. A key has one index in it at
// most.
extern "C" {

cfg_handle test_cfg_create() { return noted("create", ""), test::strikes("cfg_create") ? nullptr : cfg_create(); }

void test_cfg_destroy(cfg_handle store) { noted("destroy", ""), cfg_destroy(store); }

// Another success than the stand-in's, which has 0 alone.
int test_cfg_read_file(cfg_handle store, const char *path) {
  const int result = cfg_read_file(store, noted("read ", path));
  return result < 0 ? result : 1;
}

int test_cfg_key_exists(cfg_handle store, const char *key, int index) {
  return cfg_key_exists(store, noted("exists ", key), index) * -2;
}

const char *test_cfg_get(cfg_handle store, const char *key, int index) {
  return cfg_get(store, noted("get ", key), index);
}

const char *test_cfg_get_value(cfg_handle store, int zero, const char *key) {
  return test::strikes("cfg_get_value") ? nullptr
                                        : cfg_get_value(store, zero, noted(zero == 0 ? "string " : "not 0: ", key));
}

uint32_t test_cfg_get_uint32_value(cfg_handle store, int zero, const char *key) {
  return cfg_get_uint32_value(store, zero, noted(zero == 0 ? "u32 " : "not 0: ", key));
}

// Another truth than the stand-in's, which has 1 alone.
uint32_t test_cfg_get_bool_value(cfg_handle store, int zero, const char *key) {
  return cfg_get_bool_value(store, zero, noted(zero == 0 ? "bool " : "not 0: ", key)) * 0x80000000U;
}

cfg_iterator *test_cfg_create_index_iterator(cfg_handle store, const char *prefix, const char *suffix) {
  noted(std::string("walk ") + prefix + " ", suffix);
  return cfg_create_index_iterator(store, prefix, suffix);
}

void test_cfg_free_iterator(cfg_iterator *iterator) {
  noted("free ", iterator == nullptr ? "null" : "iterator"), cfg_free_iterator(iterator);
}
}

std::string test::asked() { return std::exchange(calls, ""); }
