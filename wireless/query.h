// One question to a wireless driver.
#pragma once

#include <linux/wireless.h>

#include <cstdint>

namespace devfacts {

// Sends the request, with room for the answer where the driver is to write there. False when it refuses.
bool ask_driver(uint32_t number, const char *name, const iw_point &room, iwreq_data &answer);

// The same, and hands the answer to take. Gives 0, or -1 when the driver refuses; take is not called then.
template <class Take>
int query(uint32_t number, const char *name, const iw_point &room, const Take &take) {
  iwreq_data answer;
  if (!ask_driver(number, name, room, answer)) return -1;
  take(answer);
  return 0;
}

}  // namespace devfacts
