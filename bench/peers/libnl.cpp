#include <netlink/cache.h>
#include <netlink/route/addr.h>
#include <netlink/route/link.h>

#include <cstdlib>

#include "peers.h"

void bench::collect_with_libnl() {
  nl_sock *socket = nl_socket_alloc();
  nl_cache *links = nullptr;
  nl_cache *addresses = nullptr;
  if (nl_connect(socket, NETLINK_ROUTE) < 0) std::abort();
  if (rtnl_link_alloc_cache(socket, AF_UNSPEC, &links) < 0) std::abort();
  if (rtnl_addr_alloc_cache(socket, &addresses) < 0) std::abort();
  nl_cache_free(addresses);
  nl_cache_free(links);
  nl_socket_free(socket);
}
