// The two configuration files, opened on first use.
#include <devfacts/product.h>
#include <unistd.h>

#include <cstring>
#include <utility>

#include "platform/cfg_store.h"
#include "product/product_file.h"

using namespace devfacts;

namespace {

constinit cfg_handle sysconf_handle = nullptr;
constinit cfg_handle prod_spec_handle = nullptr;
constinit uint8_t prod_spec_missing = 0;

void close_file(cfg_handle &handle) {
  if (handle != nullptr) cfg_destroy(std::exchange(handle, nullptr));
}

int open_file(cfg_handle &handle, const char *path) {
  handle = cfg_create();
  if (handle == nullptr) return -1;
  if (cfg_read_file(handle, path) >= 0) return 0;
  close_file(handle);
  return -1;
}

// The store takes the key as a format: a conversion in it would read values that nobody passed.
const char *get(cfg_handle handle, const char *key) {
  if (handle == nullptr || std::strchr(key, '%') != nullptr) return nullptr;
  return cfg_get(handle, key);
}

}  // namespace

int sysconf_open() { return sysconf_handle != nullptr ? 0 : open_file(sysconf_handle, "/tmp/system.cfg"); }

void sysconf_close() { close_file(sysconf_handle); }

cfg_handle sysconf_get_ctx() {
  sysconf_open();
  return sysconf_handle;
}

const char *sysconf_get(const char *key) { return get(sysconf_get_ctx(), key); }

int prod_spec_open() {
  if (prod_spec_handle != nullptr) return 0;
  if (prod_spec_missing != 0) return -1;
  if (access(product_file, R_OK) < 0) {
    prod_spec_missing = 1;
    return -1;
  }
  return open_file(prod_spec_handle, product_file);
}

void prod_spec_close() { close_file(prod_spec_handle); }

cfg_handle prod_spec_get_ctx() {
  prod_spec_open();
  return prod_spec_handle;
}

const char *prod_spec_get(const char *key) { return get(prod_spec_get_ctx(), key); }
