#include <devfacts/net.h>
#include <libmnl/libmnl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "peers.h"

namespace {

using owner_table = std::vector<ifi_entry *>;

// As large as the library's own: MNL_SOCKET_BUFFER_SIZE is 8 KiB at most, which would hold libmnl back.
constexpr size_t receive_size = 16384;

void *copy_of(const nlattr *attribute) {
  const size_t size = mnl_attr_get_payload_len(attribute);
  void *copy = std::malloc(size);
  if (copy != nullptr) std::memcpy(copy, mnl_attr_get_payload(attribute), size);
  return copy;
}

void copy_into(uint8_t (&destination)[6], const nlattr *attribute) {
  std::memcpy(destination, mnl_attr_get_payload(attribute), std::min<size_t>(mnl_attr_get_payload_len(attribute), 6));
}

int keep_link_attribute(const nlattr *attribute, void *data) {
  auto *entry = static_cast<ifi_entry *>(data);
  switch (mnl_attr_get_type(attribute)) {
    case IFLA_IFNAME: entry->name = strndup(mnl_attr_get_str(attribute), mnl_attr_get_payload_len(attribute)); break;
    case IFLA_ADDRESS: copy_into(entry->hwaddr, attribute); break;
    case IFLA_BROADCAST: copy_into(entry->broadcast, attribute); break;
    case IFLA_TXQLEN: entry->txqlen = mnl_attr_get_u32(attribute); break;
    case IFLA_STATS: entry->stats = static_cast<rtnl_link_stats *>(copy_of(attribute)); break;
    case IFLA_LINK: entry->master = static_cast<int32_t>(mnl_attr_get_u32(attribute)); break;
  }
  return MNL_CB_OK;
}

using address_table = const nlattr * [IFA_MAX + 1];

int find_address_attribute(const nlattr *attribute, void *data) {
  if (mnl_attr_type_valid(attribute, IFA_MAX) > 0) {
    static_cast<const nlattr **>(data)[mnl_attr_get_type(attribute)] = attribute;
  }
  return MNL_CB_OK;
}

void note_owner(owner_table &owners, ifi_entry *entry) {
  const auto index = static_cast<size_t>(entry->index);
  if (index >= owners.size()) owners.resize(2 * index + 1);
  owners[index] = entry;
}

int keep_link(const nlmsghdr *message, void *data) {
  const auto *record = static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(message));
  ifi_entry *entry = ifi_alloc();
  entry->index = record->ifi_index;
  entry->flags = record->ifi_flags;
  entry->type = record->ifi_type;
  mnl_attr_parse(message, sizeof *record, keep_link_attribute, entry);
  note_owner(*static_cast<owner_table *>(data), entry);
  ifi_register(entry);
  return MNL_CB_OK;
}

int keep_address(const nlmsghdr *message, void *data) {
  const auto *record = static_cast<const ifaddrmsg *>(mnl_nlmsg_get_payload(message));
  const auto &owners = *static_cast<const owner_table *>(data);
  if (record->ifa_index >= owners.size() || owners[record->ifa_index] == nullptr) return MNL_CB_OK;
  address_table found{};
  mnl_attr_parse(message, sizeof *record, find_address_attribute, found);
  ipi_entry *address = ipi_alloc();
  address->family = record->ifa_family;
  address->prefixlen = record->ifa_prefixlen;
  const nlattr *own = found[IFA_ADDRESS] != nullptr ? found[IFA_ADDRESS] : found[IFA_LOCAL];
  if (own != nullptr) address->addr = static_cast<uint8_t *>(copy_of(own));
  if (found[IFA_BROADCAST] != nullptr) address->broadcast = static_cast<uint8_t *>(copy_of(found[IFA_BROADCAST]));
  ifi_add_addr(owners[record->ifa_index], address);
  return MNL_CB_OK;
}

void dump(mnl_socket *socket, uint16_t type, mnl_cb_t keep, owner_table &owners) {
  alignas(nlmsghdr) char buffer[receive_size];
  nlmsghdr *request = mnl_nlmsg_put_header(buffer);
  request->nlmsg_type = type;
  request->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request->nlmsg_seq = static_cast<uint32_t>(std::time(nullptr));
  static_cast<rtgenmsg *>(mnl_nlmsg_put_extra_header(request, sizeof(rtgenmsg)))->rtgen_family = AF_UNSPEC;
  const uint32_t sequence = request->nlmsg_seq;
  if (mnl_socket_sendto(socket, request, request->nlmsg_len) < 0) std::abort();
  ssize_t received = 0;
  int state = MNL_CB_OK;
  do {
    received = mnl_socket_recvfrom(socket, buffer, sizeof buffer);
    if (received <= 0) std::abort();
    state = mnl_cb_run(buffer, static_cast<size_t>(received), sequence, mnl_socket_get_portid(socket), keep, &owners);
  } while (state > MNL_CB_STOP);
  if (state < 0) std::abort();
}

}  // namespace

void bench::fill_with_libmnl() {
  owner_table owners;
  mnl_socket *socket = mnl_socket_open(NETLINK_ROUTE);
  if (socket == nullptr || mnl_socket_bind(socket, 0, MNL_SOCKET_AUTOPID) < 0) std::abort();
  dump(socket, RTM_GETLINK, keep_link, owners);
  dump(socket, RTM_GETADDR, keep_address, owners);
  mnl_socket_close(socket);
}

void bench::collect_with_libmnl() {
  fill_with_libmnl();
  ifi_free_all();
}
