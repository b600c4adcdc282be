#include <devfacts/net.h>

#include <cstdio>

#include "command.h"

namespace devfacts::tool {

exit_status net(char **arguments) {
  const char *name = arguments[0];
  ifi_get_all_ip();
  if (name != nullptr && ifi_find_by_name(name) == nullptr) {
    std::fprintf(stderr, "devfacts: no interface \"%s\"\n", name);
    ifi_free_all();
    return failed;
  }
  ifi_dump_all(name);
  ifi_free_all();
  return done;
}

}  // namespace devfacts::tool
