// The state of a wired interface, by ethtool.
#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>

#include <cstring>

#include "core/interface_request.h"

using namespace devfacts;

namespace {

// The kernel's ethtool_perm_addr with a buffer for the address.
struct perm_addr_command {
  uint32_t cmd;
  uint32_t size;
  uint8_t data[8];
};
static_assert(sizeof(perm_addr_command) == 16);
static_assert(sizeof(ethtool_cmd) == 44);

constexpr size_t addr_size = sizeof eth_status{}.perm_addr;

template <class Command>
bool send_command(ifreq &request, Command &command) {
  request.ifr_data = reinterpret_cast<char *>(&command);
  return send_request(SIOCETHTOOL, request);
}

bool eth_read_perm_addr(ifreq &request, uint8_t *addr) {
  perm_addr_command command{ETHTOOL_GPERMADDR, addr_size, {}};
  if (!send_command(request, command)) return false;
  std::memcpy(addr, command.data, addr_size);
  return true;
}

// Three requests in this order, up to the first that fails.
bool read_all(eth_status *status, const char *name) {
  auto request = make_request<ifreq>(name);
  ethtool_cmd settings{};
  settings.cmd = ETHTOOL_GSET;
  if (!send_command(request, settings)) return false;
  status->speed = settings.speed;
  status->duplex = settings.duplex;
  status->supported = settings.supported;
  ethtool_value link{ETHTOOL_GLINK, 0};
  if (!send_command(request, link)) return false;
  status->link = static_cast<uint8_t>(link.data);
  return eth_read_perm_addr(request, status->perm_addr);
}

using word_pair = char[2][5];
constexpr word_pair duplex_words = {"half", "full"};
constexpr word_pair link_words = {"no", "yes"};

char *copy_word(const word_pair &words, uint8_t value, char *text, int size) {
  if (value > 1 || size < 1) return nullptr;
  std::strncpy(text, words[value], static_cast<size_t>(size));
  text[size - 1] = '\0';
  return text;
}

}  // namespace

int eth_capable(const char *name) {
  auto request = make_request<ifreq>(name);
  ethtool_cmd settings{};
  settings.cmd = ETHTOOL_GSET;
  return send_command(request, settings) ? 1 : 0;
}

int eth_info(eth_status *status, const char *name) {
  ioctl_socket();
  *status = {};
  const bool complete = read_all(status, name);
  ioctl_close();
  return complete ? 0 : -1;
}

int eth_perm_addr(uint8_t *addr, const char *name) {
  ioctl_socket();
  std::memset(addr, 0, addr_size);
  auto request = make_request<ifreq>(name);
  const bool read = eth_read_perm_addr(request, addr);
  ioctl_close();
  return read ? 0 : -1;
}

char *eth_duplex2str(const eth_status *status, char *text, int size) {
  return copy_word(duplex_words, status->duplex, text, size);
}

char *eth_link2str(const eth_status *status, char *text, int size) {
  return copy_word(link_words, status->link, text, size);
}
