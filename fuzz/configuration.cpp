// Configuration files: what a walk finds is what a lookup of its key finds.
#include "input.h"
#include "platform/cfg_store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  const cfg_handle handle = cfg_create();
  const bool is_loaded = cfg_read_file(handle, fuzz::file_with(fuzz::view(bytes, count)).c_str()) >= 0;
  cfg_iterator *first = cfg_create_index_iterator(handle, "radio", "master");
  fuzz::require(is_loaded || first == nullptr);
  for (cfg_iterator *at = first; at != nullptr; at = at->next(at)) {
    const std::string key = "radio." + std::to_string(at->index(at)) + ".master";
    fuzz::require(cfg_get(handle, "radio.%d.master", at->index(at)) == at->value(at));
    fuzz::require(cfg_get_value(handle, 0, key.c_str()) == at->value(at));
    fuzz::require(cfg_get_bool_value(handle, 0, key.c_str()) <= 1);
    cfg_get_uint32_value(handle, 0, key.c_str());
  }
  cfg_free_iterator(first);
  cfg_destroy(handle);
  return 0;
}
