// Catalogues, with the id in their first line: a translation holds no quote and comes from the catalogue, an unknown id
// comes back.
#include <devfacts/i18n.h>

#include <string>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  const std::string input(fuzz::view(bytes, count)), id = input.substr(0, input.find('\n')).substr(0, 4095).c_str();
  fuzz::set_files(input);
  if (set_po_access_path("catalogue", "/po") != 0) return 0;
  const std::string text = gettext(id.c_str());
  fuzz::require(text == id || (text.find('"') == text.npos && input.find("msgstr \"" + text + '"') != input.npos));
  return 0;
}
