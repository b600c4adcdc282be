// Hardware addresses as XML items.
#pragma once

#include <devfacts/core.h>
#include <devfacts/net.h>

namespace devfacts::tool {

inline void print_address(const char *name, const uint8_t *addr) {
  char text[sizeof "00:00:00:00:00:00"];
  xml_str_item(name, ifi_mac_ntop(text, sizeof text, addr));
}

}  // namespace devfacts::tool
