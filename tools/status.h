// What people look at: the device, or a part of it, as plain text.
#pragma once

#include "command.h"
#include "peers.h"

namespace devfacts::tool {

// Each prints a part again, with the rates since the call before.
exit_status watch_interfaces(const char *name);
exit_status watch_radio(const char *name);
exit_status watch_peers(const peer_table &peers);

}  // namespace devfacts::tool
