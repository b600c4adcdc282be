// Images of records: what was loaded is sound.
#include <devfacts/store.h>

#include "input.h"

static int check(const eeprom_record *record) {
  const auto *payload = reinterpret_cast<const char *>(record + 1);
  fuzz::require(record->length > 4 && record->id < 65535);
  fuzz::require(payload[record->length - 4] == '\0');
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  eeprom_read(fuzz::file_with(fuzz::view(bytes, count)).c_str());
  eeprom_for_each(check);
  eeprom_free();
  return 0;
}
