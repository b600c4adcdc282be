#include "wireless/query.h"

#include "core/interface_request.h"

bool devfacts::ask_driver(uint32_t number, const char *name, const iw_point &room, iwreq_data &answer) {
  auto request = request_about<iwreq>(name);
  request.u.data = room;
  if (!send_request(number, request)) return false;
  answer = request.u;
  return true;
}
