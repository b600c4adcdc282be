// What the driver shows under /proc: packet counters and state times.
#include <devfacts/core.h>
#include <devfacts/wireless.h>

#include <cstdio>

#include "core/owner.h"
#include "wireless/proc_path.h"

using namespace devfacts;

namespace {

struct counter {
  char path[22];  // in place, as below: no relocation
  char key[8];
  uint32_t iw_status::*field;
};

constexpr counter tx_retry = {"/proc/net/%s/txstats", "Retried", &iw_status::tx_retry};
constexpr counter tx_total = {"/proc/net/%s/txstats", "Packets", &iw_status::tx_total};
constexpr counter rx_errors = {"/proc/net/%s/rxstats", "Dropped", &iw_status::rx_errors};
constexpr counter rx_total = {"/proc/net/%s/rxstats", "Packets", &iw_status::rx_total};

// Read in this order, each after the one before.
constexpr struct {
  char format[22];
  int64_t iw_status::*field;
} states[] = {
    {" INIT: %lld msecs ", &iw_status::state_init}, {" SCAN: %lld msecs ", &iw_status::state_scan},
    {" AUTH: %lld msecs ", &iw_status::state_auth}, {" ASSOC: %lld msecs ", &iw_status::state_assoc},
    {" RUN: %lld msecs ", &iw_status::state_run},
};

int read_counter(const counter &which, iw_status *status, const char *name) {
  if (name == nullptr) return -1;
  first_match_u32 slot{};
  char path[4096];
  if (!format_path(path, which.path, name)) return -1;
  iterate(path, which.key, __return_first_match_in_u32, &slot);
  if (slot.found == 0) return -1;
  status->*which.field = slot.value;
  return 0;
}

}  // namespace

int iw_tx_retry(iw_status *status, const char *name) { return read_counter(tx_retry, status, name); }

int iw_tx_total(iw_status *status, const char *name) { return read_counter(tx_total, status, name); }

int iw_rx_errors(iw_status *status, const char *name) { return read_counter(rx_errors, status, name); }

int iw_rx_total(iw_status *status, const char *name) { return read_counter(rx_total, status, name); }

int iw_read_states(iw_status *status) {
  char path[4096];
  if (status->ifname == nullptr || !format_path(path, "/proc/net/madwifi/%s/state_cnt", status->ifname)) return -1;
  const unique_file file{std::fopen(path, "re")};
  if (!file) return -1;
  for (const auto &state : states) {
    long long time = 0;
    if (std::fscanf(file.get(), state.format, &time) != 1) return -1;
    status->*state.field = time;
  }
  return 0;
}
