#include <devfacts/i18n.h>

#include <cstdio>

#include "command.h"

namespace devfacts::tool {

exit_status translate(char **arguments) {
  if (set_po_access_path(arguments[1], arguments[0]) != 0) {
    std::fputs("devfacts: cannot read a language in /etc/lang\n", stderr);
    return failed;
  }
  std::puts(gettext(arguments[2]));
  return done;
}

}  // namespace devfacts::tool
