// The single values that a wireless driver reports.
#include <devfacts/wireless.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "wireless/query.h"

using namespace devfacts;

static_assert(sizeof(iwreq) == 32);
static_assert(sizeof(iw_statistics) == 32);
static_assert(offsetof(iw_statistics, qual.level) == 3);
static_assert(offsetof(iw_statistics, qual.noise) == 4);

int iw_capable(const char *name) {
  return query(SIOCGIWNAME, name, {}, [](const iwreq_data &) {}) == 0 ? 1 : 0;
}

int iw_ieee_name(iw_status *status, const char *name) {
  return query(SIOCGIWNAME, name, {}, [=](const iwreq_data &answer) {
    std::memset(status->ieee_name, 0, sizeof status->ieee_name);
    std::memcpy(status->ieee_name, answer.name, strnlen(answer.name, sizeof answer.name));
  });
}

int iw_essid(iw_status *status, const char *name) {
  constexpr uint16_t max_length = sizeof status->essid - 1;
  return query(SIOCGIWESSID, name, {status->essid, max_length, 0}, [=](const iwreq_data &answer) {
    status->essid_length = answer.essid.length;
    status->essid[std::min(answer.essid.length, max_length)] = '\0';
    status->essid_flags = static_cast<uint8_t>(answer.essid.flags);
  });
}

int iw_operation_mode(iw_status *status, const char *name) {
  return query(SIOCGIWMODE, name, {}, [=](const iwreq_data &answer) { status->mode = answer.mode; });
}

int iw_ap_addr(iw_status *status, const char *name) {
  return query(SIOCGIWAP, name, {}, [=](const iwreq_data &answer) { status->ap_addr = answer.ap_addr; });
}

int iw_current_bit_rate(iw_status *status, const char *name) {
  return query(SIOCGIWRATE, name, {}, [=](const iwreq_data &answer) { status->bit_rate = answer.bitrate.value; });
}

int iw_rssi(iw_status *status, const char *name) {
  iw_statistics statistics{};
  return query(SIOCGIWSTATS, name, {&statistics, sizeof statistics, 1}, [&](const iwreq_data &) {
    status->signal_level = statistics.qual.level;
    status->noise_level = statistics.qual.noise;
  });
}

int iw_encoding_flags(iw_status *status, const char *name) {
  uint8_t key[64]{};  // the driver may write a key, which is dropped
  return query(SIOCGIWENCODE, name, {key, sizeof key, 0},
               [=](const iwreq_data &answer) { status->encoding_flags = answer.data.flags; });
}

int iw_txpower(iw_status *status, const char *name) {
  return query(SIOCGIWTXPOW, name, {}, [=](const iwreq_data &answer) {
    status->txpower = answer.txpower.disabled != 0 ? 0 : answer.txpower.value;
  });
}
