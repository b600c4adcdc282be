// Hardware addresses: what is taken as one and written anew is the same address.
#include <devfacts/core.h>
#include <devfacts/net.h>

#include <cstring>
#include <string>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  const std::string text(fuzz::view(bytes, count));
  uint8_t address[6] = {}, again[6] = {};
  if (parse_macaddr(address, text.c_str()) != 0) return 0;
  char written[18];
  fuzz::require(parse_macaddr(again, ifi_mac_ntop(written, sizeof written, address)) == 0);
  fuzz::require(std::memcmp(address, again, sizeof address) == 0);
  return 0;
}
