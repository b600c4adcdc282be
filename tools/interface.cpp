#include "interface.h"

#include <net/if.h>

#include <cstring>

#include "core/text.h"
#include "text.h"

namespace devfacts::tool {

bool is_interface_name(const char *name) {
  const size_t length = std::strlen(name);
  if (length == 0 || length >= IF_NAMESIZE) return false;
  for (const char *at = name; *at != '\0'; ++at) {
    if (*at == '/' || *at == ':' || is_space(*at)) return false;
  }
  return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

exit_status refuse_interface(const char *name, const char *lack) {
  if (!is_interface_name(name) || if_nametoindex(name) == 0) {
    print_error("no interface \"%s\"", name);
  } else {
    print_error("\"%s\" %s", name, lack);
  }
  return failed;
}

}  // namespace devfacts::tool
