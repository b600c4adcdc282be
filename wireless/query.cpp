#include "wireless/query.h"

#include "core/interface_request.h"

bool devfacts::ask_driver(uint32_t number, const char *name, const iw_point &buffer, iwreq_data &answer) {
  auto request = make_request<iwreq>(name);
  // Field by field: a copy of the record would bring its padding along, bytes of our stack that the driver would see.
  request.u.data.pointer = buffer.pointer;
  request.u.data.length = buffer.length;
  request.u.data.flags = buffer.flags;
  if (!send_request(number, request)) return false;
  answer = request.u;
  return true;
}
