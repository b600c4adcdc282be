#include <devfacts/core.h>
#include <devfacts/ethernet.h>

#include <cstdio>

#include "address.h"
#include "command.h"

namespace devfacts::tool {

exit_status ethernet(char **arguments) {
  const char *name = arguments[0];
  eth_status status;
  if (eth_info(&status, name) != 0) {
    std::fprintf(stderr, "devfacts: the driver of \"%s\" does not tell about an Ethernet link\n", name);
    return failed;
  }
  char word[5];
  std::puts("<ethernet>");
  xml_str_esc_item("name", name);
  xml_int_item("speed", status.speed);
  xml_str_item("duplex", eth_duplex2str(&status, word, sizeof word));
  xml_str_item("link", eth_link2str(&status, word, sizeof word));
  xml_int64_item("supported", status.supported);
  print_address("perm_addr", status.perm_addr);
  std::puts("</ethernet>");
  return done;
}

}  // namespace devfacts::tool
