// What the product description says about a radio.
#include <devfacts/product.h>
#include <devfacts/wireless.h>

#include <cstring>

#include "core/number.h"
#include "product/cfg_store.h"

using namespace devfacts;

namespace {

constexpr size_t longest_name = 16;

constexpr struct {
  char key[28];  // in place, as below: no relocation
  iw_limit_value iw_radio_limits_t::*slot;
} numbers[] = {
    {"radio.%d.antenna-gain", &iw_radio_limits_t::antenna_gain},
    {"radio.%d.txpower-offset", &iw_radio_limits_t::txpower_offset},
    {"radio.%d.min-txpower", &iw_radio_limits_t::min_txpower},
    {"radio.%d.frequency-offset", &iw_radio_limits_t::frequency_offset},
};

constexpr struct {
  char key[30];
  const char *iw_radio_limits_t::*slot;
} texts[] = {
    {"radio.%d.ieee-band", &iw_radio_limits_t::ieee_band},
    {"radio.%d.allowed-modulations", &iw_radio_limits_t::allowed_modulations},
};

constinit int32_t iw_limits_pending = 1;
constinit iw_radio_limits_t iw_limits_cache = {};

const char *find_text(cfg_handle store, const char *key, int radio) {
  return cfg_key_exists(store, key, radio) != 0 ? cfg_get(store, key, radio) : nullptr;
}

void iw_parse_limit(const char *text, iw_limit_value &limit) {
  limit.present = parse_number(text, limit.value) ? 1 : 0;
}

void read_radio(cfg_handle store, int radio) {
  for (const auto &number : numbers) {
    const char *text = find_text(store, number.key, radio);
    if (text != nullptr) iw_parse_limit(text, iw_limits_cache.*number.slot);
  }
  for (const auto &each : texts) {
    const char *text = find_text(store, each.key, radio);
    // Kept for as long as the process lives: the cache outlives the store.
    char *copy = text != nullptr ? strdup(text) : nullptr;
    if (copy != nullptr) iw_limits_cache.*each.slot = copy;
  }
}

bool is_master(cfg_iterator *at, const char *name) {
  const char *master = at->value(at);
  return master != nullptr && std::strlen(name) <= longest_name && std::strcmp(master, name) == 0;
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
