// One question to a wireless driver.
#pragma once

#include <linux/wireless.h>

#include <cstdint>

#include "core/interface_request.h"

namespace devfacts {

// Sends the request, with room for the answer where the driver is to write there, and hands the answer to take.
// Gives 0, or -1 when the driver refuses; take is not called then.
template <class Take>
int query(uint32_t number, const char *name, const iw_point &room, const Take &take) {
  auto request = request_about<iwreq>(name);
  request.u.data = room;
  if (!send_request(number, request)) return -1;
  take(request.u);
  return 0;
}

}  // namespace devfacts
