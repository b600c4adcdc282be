// The stations that are connected to a wireless interface, and whether there is one.
#include <devfacts/core.h>
#include <devfacts/wireless.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "wireless/proc_path.h"

using namespace devfacts;

namespace {

constexpr char first_key[] = "Peer MAC address";

constexpr struct {
  char key[14];  // in place: no relocation
  int32_t iw_peer_entry::*field;
} strengths[] = {
    {"Rx last RSSI0", &iw_peer_entry::rssi0},
    {"Rx last RSSI1", &iw_peer_entry::rssi1},
    {"Rx last RSSI2", &iw_peer_entry::rssi2},
};

template <size_t Size>
bool begins_with(const char *text, const char (&start)[Size]) {
  return std::strncmp(text, start, Size - 1) == 0;
}

int add_peer(iw_peers_list *list, const char *address) {
  void *rows = std::realloc(list->rows, (list->count + size_t{1}) * sizeof(iw_peer_entry));
  if (rows == nullptr) {
    iw_peers_free(list);
    return -1;
  }
  list->rows = static_cast<iw_peer_entry *>(rows);
  iw_peer_entry &row = list->rows[list->count++] = {};
  auto &mac = row.mac;
  // NOLINTNEXTLINE(cert-err34-c): what is no byte leaves its place at zero
  std::sscanf(address, "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx\n", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4], &mac[5]);
  return 0;
}

int iw_peer_line(void *context, char *key, char *value) {
  auto *list = static_cast<iw_peers_list *>(context);
  if (begins_with(key, first_key)) return add_peer(list, value);
  if (list->count == 0) return 0;
  for (const auto &strength : strengths) {
    if (!begins_with(key, strength.key)) continue;
    // NOLINTNEXTLINE(cert-err34-c): what is no number leaves the field as it was
    std::sscanf(value, "%d", &(list->rows[list->count - 1].*strength.field));
    break;
  }
  return 0;
}

}  // namespace

int iw_peers(iw_peers_list *list, const char *name) {
  char path[256];
  if (format_path(path, "/proc/net/%s/peers", name != nullptr ? name : "ra0")) {
    iterate(path, nullptr, iw_peer_line, list);
  }
  return 0;
}

void iw_peers_free(iw_peers_list *list) {
  if (list == nullptr) return;
  std::free(list->rows);
  list->rows = nullptr;
  list->count = 0;
}

int iw_link_established() {
  first_match_string slot{};
  iterate("/proc/net/ra0/peers", first_key, __return_first_match_in_string, &slot);
  if (slot.found == 0) return 0;
  std::free(slot.value);
  return 1;
}
