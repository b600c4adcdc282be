// Stores of any content: what was loaded is sound, and comes back as it is when it is written into an empty store.
#include <devfacts/store.h>

#include <string>

#include "input.h"

static std::string table;

static int append(const eeprom_record *record) {
  fuzz::require(record->length > 4 && record->id < 65535);
  const auto *payload = reinterpret_cast<const char *>(record + 1);
  fuzz::require(payload[record->length - 4] == '\0');
  table += std::to_string(record->id) + ":" + std::string(payload, record->length - 4u);
  return 0;
}

static std::string load() {
  eeprom_free();
  eeprom_init();
  table.clear();
  eeprom_for_each(append);
  return table;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  fuzz::set_flash(fuzz::view(bytes, count));
  const std::string loaded = load();
  fuzz::set_flash(std::string(65536, '\0'));
  eeprom_write();
  fuzz::require(loaded.size() >= 32768 || load() == loaded);
  eeprom_free();
  fuzz::set_files(fuzz::view(bytes, count));
  eeprom_read("file");
  return 0;
}
