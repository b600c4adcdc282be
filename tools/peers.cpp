#include "peers.h"

#include <devfacts/core.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "interface.h"
#include "status.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr char first_key[] = "Peer MAC address";
constexpr char strength_key[] = "Rx last RSSI";
constexpr size_t strength_size = sizeof strength_key - 1;

constexpr int32_t iw_peer_entry::*chains[chain_count] = {&iw_peer_entry::rssi0, &iw_peer_entry::rssi1,
                                                         &iw_peer_entry::rssi2};

bool is_number(const char *text) {
  char *end = nullptr;
  std::strtol(text, &end, 10);
  return end != text;
}

}  // namespace

// A walk over the file's lines: the rows so far, and the chains that the last one has.
int peer_table::mark_line(void *context, char *key, char *value) {
  auto *table = static_cast<peer_table *>(context);
  if (std::strncmp(key, first_key, sizeof first_key - 1) == 0) {
    ++table->marked_;
  } else if (std::strncmp(key, strength_key, strength_size) == 0 && table->marked_ - 1 < table->size()) {
    const unsigned chain = static_cast<unsigned char>(key[strength_size]) - unsigned{'0'};
    if (chain < chain_count && is_number(value))
      table->answers_.get()[table->marked_ - 1] |= static_cast<uint8_t>(1U << chain);
  }
  return 0;
}

bool peer_table::read(const char *name) {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/net/%s/peers", name);
  if (access(path, R_OK) != 0) return false;
  iw_peers(&list_, name);
  answers_.reset(static_cast<uint8_t *>(std::calloc(size() + 1, 1)));
  if (!answers_) return false;
  iterate(path, nullptr, mark_line, this);
  return true;
}

bool peer_table::has_strength(size_t index, unsigned chain) const { return (answers_.get()[index] >> chain & 1) != 0; }

int32_t peer_table::strength(size_t index, unsigned chain) const { return row(index).*chains[chain]; }

exit_status peers_command(const request &asked) {
  const char *name = asked.arguments[0] != nullptr ? asked.arguments[0] : "ra0";
  if (!is_interface_name(name)) return refuse_interface(name);
  peer_table peers;
  if (!peers.read(name)) {
    print_error("no peers of \"%s\": /proc/net/%s/peers: %s", name, name, std::strerror(errno));
    return failed;
  }
  if (asked.is_watched()) return watch_peers(peers);
  document out(asked.wanted_form(), "peers");
  if (asked.count == 0) out.flag("link_established", iw_link_established() != 0);
  out.begin_list("peers");
  for (size_t i = 0; i < peers.size(); ++i) {
    out.begin_group("peer");
    out.address("mac", peers.row(i).mac);
    for (unsigned chain = 0; chain < chain_count; ++chain) {
      const char field[] = {'r', 's', 's', 'i', static_cast<char>('0' + chain), '\0'};
      out.number(field, peers.strength(i, chain), peers.has_strength(i, chain));
    }
    out.end_group("peer");
  }
  out.end_list();
  return done;
}

}  // namespace devfacts::tool
