#include <devfacts/core.h>
#include <devfacts/ethernet.h>

#include "interface.h"
#include "link.h"

namespace devfacts::tool {

bool read_link(link_facts &facts, const char *name) {
  eth_status &status = facts.status;
  if (!is_interface_name(name)) return false;
  const bool is_whole = eth_info(&status, name) == 0;
  const bool answers = is_whole || eth_capable(name) != 0;
  ioctl_close();
  if (!answers) return false;
  facts.has_address = is_whole || eth_perm_addr(status.perm_addr, name) == 0;
  // Of two requests one failed: no link up is then no answer.
  facts.has_link = is_whole || status.link != 0;
  // Drivers without a link tell both of these.
  facts.has_speed = status.speed != 0 && status.speed != UINT16_MAX;
  return true;
}

exit_status ethernet_command(const request &asked) {
  const char *name = asked.arguments[0];
  link_facts facts;
  if (!read_link(facts, name)) return refuse_interface(name, "has a driver that tells nothing about an Ethernet link");
  char word[sizeof "full"];
  document out(asked.wanted_form(), "ethernet");
  out.text("name", name);
  out.number("speed", facts.status.speed, facts.has_speed);
  out.text("duplex", eth_duplex2str(&facts.status, word, sizeof word));
  out.text("link", facts.has_link ? eth_link2str(&facts.status, word, sizeof word) : nullptr);
  out.number("supported", facts.status.supported);
  out.address("perm_addr", facts.has_address ? facts.status.perm_addr : nullptr);
  return done;
}

}  // namespace devfacts::tool
