// Configuration files: what a walk finds is what a lookup of its key finds.
#include <string>

#include "input.h"
#include "platform/cfg_store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  fuzz::set_files(fuzz::view(bytes, count));
  cfg_handle store = cfg_create();
  const bool loaded = cfg_read_file(store, "file") >= 0;
  cfg_iterator *first = cfg_create_index_iterator(store, "radio", "master");
  fuzz::require(loaded || first == nullptr);
  for (auto *at = first; at != nullptr; at = at->next(at)) {
    fuzz::require(cfg_get(store, "radio.%d.master", at->index(at)) == at->value(at));
    const std::string key = "radio." + std::to_string(at->index(at)) + ".master";
    fuzz::require(cfg_get_value(store, 0, key.c_str()) == at->value(at) &&
                  cfg_get_bool_value(store, 0, key.c_str()) <= 1);
    cfg_get_uint32_value(store, 0, key.c_str());
  }
  cfg_free_iterator(first);
  cfg_destroy(store);
  return 0;
}
