#include "radio.h"

#include <devfacts/core.h>
#include <devfacts/net.h>
#include <devfacts/product.h>

#include <cmath>
#include <cstring>
#include <iterator>

#include "interface.h"

namespace devfacts::tool {
namespace {

// In the order of the facts.
constexpr int (*queries[])(iw_status *status, const char *name) = {
    iw_ieee_name, iw_essid,          iw_operation_mode, iw_freq_channel, iw_ap_addr,  iw_current_bit_rate, iw_bitrates,
    iw_rssi,      iw_encoding_flags, iw_txpower,        iw_tx_retry,     iw_tx_total, iw_rx_errors,        iw_rx_total,
};
constexpr auto first_file = static_cast<unsigned>(fact::tx_retry);

// With marks in the fields of which the result of a query does not tell whether they are set.
void clear(radio_facts &facts, const char *name) {
  facts = {};
  iw_status &status = facts.status;
  status.ifname = name;
  status.vendor = cpu_vendor();
  status.frequency = NAN;
  status.channel = radio_facts::no_channel;
  status.state_init = status.state_scan = status.state_auth = radio_facts::no_time;
  status.state_assoc = status.state_run = radio_facts::no_time;
}

void ask(radio_facts &facts, const char *name, unsigned first) {
  clear(facts, name);
  for (unsigned i = first; i < std::size(queries); ++i) {
    if (queries[i](&facts.status, name) == 0) facts.answers |= 1U << i;
  }
  iw_read_states(&facts.status);
}

bool add_radio(radio_list &list, const char *name, bool has_driver) {
  for (size_t i = 0; i < list.count; ++i) {
    if (std::strcmp(list.rows.get()[i].status.ifname, name) == 0) return true;
  }
  auto *rows = static_cast<radio_facts *>(std::realloc(list.rows.get(), (list.count + 1) * sizeof(radio_facts)));
  if (rows == nullptr) return false;
  static_cast<void>(list.rows.release());
  list.rows.reset(rows);
  radio_facts &facts = rows[list.count++];
  if (has_driver) {
    ask_radio(facts, name);
  } else {
    read_radio_files(facts, name);
  }
  return true;
}

}  // namespace

void ask_radio(radio_facts &facts, const char *name) {
  ask(facts, name, 0);
  ioctl_close();
}

bool read_radio_files(radio_facts &facts, const char *name) {
  ask(facts, name, first_file);
  return facts.has_answer();
}

radio_list collect_radios() {
  radio_list list;
  for (const ifi_entry *entry = nullptr; (entry = ifi_next(entry)) != nullptr;) {
    if (entry->name == nullptr || iw_capable(entry->name) == 0) continue;
    if (!add_radio(list, entry->name, true)) break;
  }
  ioctl_close();
  const product_caps_t *caps = product_caps_get();
  if (caps == nullptr) return list;
  for (const caps_radio *radio = caps->radios; radio != caps->radios + caps->radio_count; ++radio) {
    if (!is_interface_name(radio->master.value)) continue;
    if (!add_radio(list, radio->master.value, false)) return list;
  }
  return list;
}

}  // namespace devfacts::tool
