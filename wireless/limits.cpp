// What the product description says about a radio.
#include <devfacts/product.h>
#include <devfacts/wireless.h>

#include <cstring>

#include "core/number.h"
#include "platform/cfg_store.h"

using namespace devfacts;

namespace {

constexpr size_t max_name_length = 16;

// In the order of reading; each has one of the two fields.
constexpr struct limit_key {
  char key[30];  // in place: no relocation
  iw_limit_value iw_radio_limits_t::*number;
  const char *iw_radio_limits_t::*text;
} limit_keys[] = {
    {"radio.%d.antenna-gain", &iw_radio_limits_t::antenna_gain, nullptr},
    {"radio.%d.txpower-offset", &iw_radio_limits_t::txpower_offset, nullptr},
    {"radio.%d.min-txpower", &iw_radio_limits_t::min_txpower, nullptr},
    {"radio.%d.frequency-offset", &iw_radio_limits_t::frequency_offset, nullptr},
    {"radio.%d.ieee-band", nullptr, &iw_radio_limits_t::ieee_band},
    {"radio.%d.allowed-modulations", nullptr, &iw_radio_limits_t::allowed_modulations},
};

constinit int32_t iw_limits_pending = 1;
constinit iw_radio_limits_t iw_limits_cache = {};

void iw_parse_limit(const char *text, iw_limit_value &limit) {
  limit.present = parse_number(text, limit.value) ? 1 : 0;
}

// A copy for the life of the process: the cache outlives the store.
void keep_text(const char *text, const char *&slot) {
  const char *copy = strdup(text);
  if (copy != nullptr) slot = copy;
}

void read_radio(cfg_handle store, int radio) {
  for (const limit_key &each : limit_keys) {
    const char *text = cfg_key_exists(store, each.key, radio) != 0 ? cfg_get(store, each.key, radio) : nullptr;
    if (text == nullptr) continue;
    if (each.number != nullptr) {
      iw_parse_limit(text, iw_limits_cache.*each.number);
    } else {
      keep_text(text, iw_limits_cache.*each.text);
    }
  }
}

bool is_master(cfg_iterator *at, const char *name) {
  const char *master = at->value(at);
  return master != nullptr && std::strlen(name) <= max_name_length && std::strcmp(master, name) == 0;
}

void find_radio(cfg_handle store, const char *name) {
  cfg_iterator *first = cfg_create_index_iterator(store, "radio", "master");
  cfg_iterator *at = first;
  while (at != nullptr && !is_master(at, name)) at = at->next(at);
  if (at != nullptr) read_radio(store, at->index(at));
  cfg_free_iterator(first);
}

}  // namespace

int iw_radio_limits(iw_radio_limits_t *limits, const char *name) {
  if (iw_limits_pending != 0) {
    iw_limits_cache = {};
    iw_limits_cache.allowed_modulations = "OFDM";
    iw_limits_cache.ieee_band = "5GHz";
    cfg_handle store = prod_spec_get_ctx();
    if (store != nullptr) find_radio(store, name);
    iw_limits_pending = 0;
  }
  *limits = iw_limits_cache;
  return 0;
}

const char *iw_countrycode_limits() {
  cfg_handle store = prod_spec_get_ctx();
  if (store == nullptr || cfg_key_exists(store, "product.countrycode") == 0) return nullptr;
  return cfg_get(store, "product.countrycode");
}
