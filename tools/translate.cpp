#include <devfacts/i18n.h>

#include "command.h"
#include "text.h"

namespace devfacts::tool {

exit_status translate_command(const request &asked) {
  if (set_po_access_path(asked.arguments[1], asked.arguments[0]) != 0) {
    print_error("cannot read a language in /etc/lang");
    return failed;
  }
  print_value(gettext(asked.arguments[2]));
  return done;
}

}  // namespace devfacts::tool
