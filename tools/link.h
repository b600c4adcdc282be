// What ethtool tells of a link, and which of it is an answer.
#pragma once

#include <devfacts/ethernet.h>

namespace devfacts::tool {

struct link_facts {
  eth_status status;
  bool has_speed;
  bool has_link;
  bool has_address;
};

// False if the driver tells nothing.
bool read_link(link_facts &facts, const char *name);

}  // namespace devfacts::tool
