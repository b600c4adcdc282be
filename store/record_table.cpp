#include "store/record_table.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "store/type_size.h"

using namespace devfacts;

constinit record_table devfacts::eeprom_table = {0, nullptr};

namespace {

constexpr uint32_t max_slots = 65535;
constexpr uint32_t max_payload = UINT16_MAX - record_head_size;

// Twice the id, but at least a slot for it.
constexpr uint32_t capacity_for(uint32_t id) { return std::min(std::max(2 * id, id + 1), max_slots); }
static_assert(capacity_for(0) == 1 && capacity_for(35) == 70 && capacity_for(65534) == max_slots);

bool grow(uint32_t capacity) {
  void *slots = std::realloc(eeprom_table.slots, capacity * sizeof(eeprom_record *));
  if (slots == nullptr) return false;
  eeprom_table.slots = static_cast<eeprom_record **>(slots);
  std::fill(eeprom_table.slots + eeprom_table.capacity, eeprom_table.slots + capacity, nullptr);
  eeprom_table.capacity = capacity;
  return true;
}

void eeprom_slot_release(uint32_t id) { std::free(std::exchange(eeprom_table.slots[id], nullptr)); }

// With the padding, and one more zero that ends a text.
eeprom_record *make_record(uint32_t id, const void *data, uint32_t size) {
  const uint32_t padded = padded_size(size + record_head_size);
  auto *record = static_cast<eeprom_record *>(std::malloc(padded + 1));
  if (record == nullptr) return nullptr;
  record[padded / sizeof *record - 1] = {};
  record->length = static_cast<uint16_t>(size + record_head_size);
  record->id = static_cast<uint16_t>(id);
  std::memcpy(record + 1, data, size);
  reinterpret_cast<char *>(record)[padded] = '\0';
  return record;
}

}  // namespace

int eeprom_update(int32_t id, const void *data, uint32_t size) {
  if (size == 0) return 0;
  const auto slot = static_cast<uint32_t>(id);  // negative ones are larger than all others
  if (slot >= max_slots || size > max_payload) return -1;
  if (slot >= eeprom_table.capacity && !grow(capacity_for(slot))) return -1;
  eeprom_slot_release(slot);
  eeprom_record *record = make_record(slot, data, size);
  if (record == nullptr) return -1;
  eeprom_table.slots[slot] = record;
  return 0;
}

int eeprom_get(int32_t id, const void **data_out, uint32_t *count_out) {
  *data_out = nullptr;
  *count_out = 0;
  const auto slot = static_cast<uint32_t>(id);
  if (slot >= std::min(eeprom_type_count, eeprom_table.capacity)) return 0;
  const eeprom_record *record = eeprom_table.slots[slot];
  if (record == nullptr) return 0;
  *data_out = record + 1;
  const uint32_t size = eeprom_type_size[slot];
  if (size != 0) *count_out = (record->length - record_head_size) / size;
  return *count_out != 0 ? 1 : 0;
}

void eeprom_delete(uint32_t id) {
  if (id < eeprom_table.capacity) eeprom_slot_release(id);
}

void eeprom_free() {
  for (uint32_t id = 0; id < eeprom_table.capacity; ++id) eeprom_slot_release(id);
  std::free(eeprom_table.slots);
  eeprom_table = {0, nullptr};
}

void eeprom_for_each(eeprom_callback callback) {
  // Reads the table again for each slot: the callback may change it.
  for (uint32_t id = 0; id < eeprom_table.capacity; ++id) {
    if (eeprom_table.slots[id] != nullptr) callback(eeprom_table.slots[id]);
  }
}
