// The state of a link by ethtool, and which parts of it are answers.
#pragma once

#include <devfacts/ethernet.h>

namespace devfacts::tool {

struct link_facts {
  eth_status status;
  bool has_speed;
  bool has_link;
  bool has_address;
};

// False if the driver answers nothing.
bool read_link(link_facts &facts, const char *name);

}  // namespace devfacts::tool
