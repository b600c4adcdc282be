// What people look at: the device, or a part of it, as plain text of 80 columns.
#pragma once

#include "command.h"
#include "peers.h"

namespace devfacts::tool {

// Each prints a part anew; a later call in the process has the rates since the one before.
exit_status show_interfaces(const char *name);
exit_status show_radio(const char *name);
exit_status show_peers(const char *name, const peer_table &peers);

}  // namespace devfacts::tool
