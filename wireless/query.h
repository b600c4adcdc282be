// One question to a wireless driver.
#pragma once

#include <linux/wireless.h>

#include <cstdint>

namespace devfacts {

// Sends the request, with the buffer that the driver is to write to, if any. False if it refuses.
bool ask_driver(uint32_t number, const char *name, const iw_point &buffer, iwreq_data &answer);

// The same, and hands the answer to take. Returns 0, or -1 if the driver refuses; take is not called then.
template <class Take>
int query(uint32_t number, const char *name, const iw_point &buffer, const Take &take) {
  iwreq_data answer;
  if (!ask_driver(number, name, buffer, answer)) return -1;
  take(answer);
  return 0;
}

}  // namespace devfacts
