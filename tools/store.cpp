// The factory records: all of them as an XML document, single ones as hexadecimal digits, and changes to them.
#include <devfacts/core.h>
#include <devfacts/store.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command.h"
#include "core/big_endian.h"
#include "core/owner.h"
#include "store/type_size.h"

namespace devfacts::tool {
namespace {

constexpr unsigned long most_id = 65534;

// Walks have no context of their own.
const eeprom_record *found;
uint32_t wanted_id;
uint32_t image_size;
FILE *copy;

int find_record(const eeprom_record *record) {
  if (record->id == wanted_id) found = record;
  return 0;
}

const eeprom_record *record_of(uint32_t id) {
  found = nullptr;
  wanted_id = id;
  eeprom_for_each(find_record);
  return found;
}

int add_size(const eeprom_record *record) {
  image_size += (record->length + 3U) & ~3U;
  return 0;
}

// The bytes that the table takes as an image; an empty one takes 16.
uint32_t size_of_image() {
  image_size = 16;
  eeprom_for_each(add_size);
  return image_size;
}

int copy_record(const eeprom_record *record) { return static_cast<int>(std::fwrite(record, record->length, 1, copy)); }

// All records, one after the other; null without memory.
malloc_ptr<char> copy_of_table(size_t &size) {
  char *bytes = nullptr;
  copy = open_memstream(&bytes, &size);
  if (copy == nullptr) return {};
  eeprom_for_each(copy_record);
  const bool is_whole = std::ferror(copy) == 0;
  malloc_ptr<char> held{std::fclose(copy) == 0 ? bytes : nullptr};
  return is_whole ? std::move(held) : malloc_ptr<char>{};
}

exit_status fail(const char *format, const char *what = "") {
  std::fputs("devfacts: ", stderr);
  std::fprintf(stderr, format, what);
  std::fputc('\n', stderr);
  return failed;
}

void print_payload(const eeprom_record *record) {
  const auto *bytes = reinterpret_cast<const unsigned char *>(record + 1);
  for (const auto *end = bytes + record->length - sizeof *record; bytes != end; ++bytes) std::printf("%02x", *bytes);
}

int print_record(const eeprom_record *record) {
  std::puts(" <record>");
  xml_int_item("id", record->id);
  xml_int_item("size", record->length - static_cast<int32_t>(sizeof *record));
  xml_int_item("element_size", record->id < eeprom_type_count ? eeprom_type_size[record->id] : 0);
  std::fputs("  <bytes>", stdout);
  print_payload(record);
  std::puts("</bytes>\n </record>");
  return 0;
}

exit_status list() {
  const int result = eeprom_init();
  std::puts("<records>");
  eeprom_for_each(print_record);
  std::puts("</records>");
  return result == 0 ? done : fail("the store holds no whole image");
}

bool parse_id(const char *text, uint32_t &id) {
  char *end = nullptr;
  errno = 0;
  const unsigned long value = std::strtoul(text, &end, 10);
  id = static_cast<uint32_t>(value);
  return errno == 0 && *text >= '0' && *text <= '9' && *end == '\0' && value <= most_id;
}

int digit_value(char digit) {
  const char *const digits = "0123456789abcdef";
  const char *place =
      digit != '\0' ? std::strchr(digits, digit >= 'A' && digit <= 'F' ? digit + ('a' - 'A') : digit) : nullptr;
  return place != nullptr ? static_cast<int>(place - digits) : -1;
}

// Turns the digits into bytes in place; 0 where they are none, or no whole bytes.
uint32_t parse_bytes(char *text) {
  const size_t length = std::strlen(text);
  for (size_t i = 0; i < length; i += 2) {
    const int high = digit_value(text[i]), low = digit_value(text[i + 1]);
    if (high < 0 || low < 0) return 0;
    text[i / 2] = static_cast<char>(high << 4 | low);
  }
  return static_cast<uint32_t>(length / 2);
}

// A damaged image is not written over with what could be read of it.
// Nor is one that could not be read taken for an empty one at once: a fault that passes must not cost the other
// records.
bool load_to_change() {
  if (eeprom_init() == 0) return true;
  eeprom_free();
  return eeprom_init() == 0 || size_of_image() == 16;
}

exit_status refuse_damaged() { return fail("the stored image is damaged; only import replaces it"); }

// The library does not tell how it went: the store is loaded again.
exit_status save() {
  size_t size = 0, stored_size = 0;
  const auto table = copy_of_table(size);
  eeprom_write();
  eeprom_free();
  eeprom_init();
  const auto stored = copy_of_table(stored_size);
  if (!table || !stored) return fail("no memory to compare the store with");
  if (size == stored_size && std::memcmp(table.get(), stored.get(), size) == 0) return done;
  return fail("the store does not hold the new records: no room for them, or it cannot be written");
}

exit_status get(char **operands) {
  uint32_t id;
  if (!parse_id(operands[0], id)) return wrong_usage;
  eeprom_init();
  const eeprom_record *record = record_of(id);
  if (record == nullptr) return fail("no record %s", operands[0]);
  print_payload(record);
  std::puts("");
  return done;
}

exit_status set(char **operands) {
  uint32_t id;
  const uint32_t size = parse_bytes(operands[1]);
  if (size == 0 || !parse_id(operands[0], id)) return wrong_usage;
  if (!load_to_change()) return refuse_damaged();
  if (eeprom_update(static_cast<int32_t>(id), operands[1], size) != 0)
    return fail("record %s is too long", operands[0]);
  return save();
}

exit_status remove(char **operands) {
  uint32_t id;
  if (!parse_id(operands[0], id)) return wrong_usage;
  if (!load_to_change()) return refuse_damaged();
  if (record_of(id) == nullptr) return fail("no record %s", operands[0]);
  eeprom_delete(id);
  if (size_of_image() == 16)
    return fail("record %s is the last one, and stays: an image holds one at least", operands[0]);
  return save();
}

// The length that an image file claims to have; 0 where it cannot be read.
uint32_t claimed_length(const char *path) {
  big_endian<uint32_t> words[2];
  const unique_file file{std::fopen(path, "re")};
  return file && std::fread(words, sizeof words, 1, file.get()) == 1 ? words[1].value() : 0;
}

exit_status import(char **operands) {
  const char *path = operands[0];
  eeprom_read(path);
  if (size_of_image() == 16 || size_of_image() != claimed_length(path)) {
    return fail("\"%s\" holds no whole image, or one with an id twice", path);
  }
  eeprom_free();
  if (!load_to_change()) eeprom_free();
  eeprom_read(path);
  return save();
}

constexpr struct {
  const char *name;
  const char *operands;
  int count;  // --write included
  bool writes;
  exit_status (*run)(char **operands);
} actions[] = {
    {"get", "ID", 1, false, get},
    {"set", "ID HEX --write", 3, true, set},
    {"delete", "ID --write", 2, true, remove},
    {"import", "FILE --write", 2, true, import},
};

int count_of(char **words) {
  int count = 0;
  while (words[count] != nullptr) ++count;
  return count;
}

}  // namespace

exit_status records(char **arguments) {
  if (arguments[0] == nullptr) return list();
  for (const auto &each : actions) {
    if (std::strcmp(each.name, arguments[0]) != 0) continue;
    const bool is_complete =
        count_of(arguments + 1) == each.count && (!each.writes || std::strcmp(arguments[each.count], "--write") == 0);
    const exit_status status = is_complete ? each.run(arguments + 1) : wrong_usage;
    if (status == wrong_usage) std::fprintf(stderr, "usage: devfacts records %s %s\n", each.name, each.operands);
    eeprom_free();
    return status;
  }
  std::fprintf(stderr, "devfacts: no such action: records %s\n", arguments[0]);
  return wrong_usage;
}

}  // namespace devfacts::tool
