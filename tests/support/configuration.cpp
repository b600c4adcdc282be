#include "configuration.h"

#include "faults.h"
#include "platform/cfg_store.h"

static std::string calls;
static size_t line_length = 0;

static void note(const std::string &operation, const char *key) {
  const std::string call = "[" + operation + (*key == '\0' ? "" : " ") + key + "]";
  if (line_length + call.size() > 120) {
    calls += "\n";
    line_length = 0;
  }
  calls += call;
  line_length += call.size();
}

std::string test::asked() {
  std::string noted = calls.empty() ? "" : calls + "\n";
  calls.clear();
  line_length = 0;
  return noted;
}

// What is noted stands once for each kind of value.
static std::string kind(int zero, const std::string &name) { return zero == 0 ? name : "not 0:"; }

// The library's call of NAME is test_NAME. A key has at most one index in it. Results that are true are other numbers
// than the stand-in's.
extern "C" {
#define RECORDED(type, name, parameters, operation, key, result) \
  type test_##name parameters {                                  \
    note(operation, key);                                        \
    return result;                                               \
  }
RECORDED(cfg_handle, cfg_create, (), "create", "", test::strikes("cfg_create") ? nullptr : cfg_create())
RECORDED(void, cfg_destroy, (cfg_handle handle), "destroy", "", cfg_destroy(handle))
RECORDED(int, cfg_read_file, (cfg_handle handle, const char *path), "read", path,
         cfg_read_file(handle, path) < 0 ? -1 : 1)
RECORDED(int, cfg_key_exists, (cfg_handle handle, const char *key, int index), "exists", key,
         cfg_key_exists(handle, key, index) * -2)
RECORDED(const char *, cfg_get, (cfg_handle handle, const char *key, int index), "get", key,
         cfg_get(handle, key, index))
RECORDED(const char *, cfg_get_value, (cfg_handle handle, int zero, const char *key), kind(zero, "string"), key,
         test::strikes("cfg_get_value") ? nullptr : cfg_get_value(handle, zero, key))
RECORDED(uint32_t, cfg_get_uint32_value, (cfg_handle handle, int zero, const char *key), kind(zero, "u32"), key,
         cfg_get_uint32_value(handle, zero, key))
RECORDED(uint32_t, cfg_get_bool_value, (cfg_handle handle, int zero, const char *key), kind(zero, "bool"), key,
         cfg_get_bool_value(handle, zero, key) * 0x80000000U)
RECORDED(cfg_iterator *, cfg_create_index_iterator, (cfg_handle handle, const char *prefix, const char *suffix), "walk",
         (prefix + std::string(" ") + suffix).c_str(), cfg_create_index_iterator(handle, prefix, suffix))
RECORDED(void, cfg_free_iterator, (cfg_iterator * iterator), "free", iterator == nullptr ? "null" : "iterator",
         cfg_free_iterator(iterator))
}
