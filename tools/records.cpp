// The factory records: all of them as a document, single ones as hexadecimal digits, and changes to them.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "command.h"
#include "store.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr unsigned long max_id = 65534;

// As store.h has them; ids beyond have no elements.
constexpr uint8_t element_sizes[] = {0, 1, 1, 1, 1, 4, 1, 8, 8,  4,  4, 1, 4, 4, 4, 2, 4, 1,
                                     1, 1, 1, 0, 0, 0, 0, 1, 12, 12, 6, 6, 1, 1, 1, 1, 1, 0};
static_assert(sizeof element_sizes == 36);

// Walks over the table have no context of their own.
const eeprom_record *found;
uint32_t wanted_id;
document *listing;
FILE *image_file;

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

std::span<const uint8_t> payload_of(const eeprom_record *record) {
  return {reinterpret_cast<const uint8_t *>(record + 1), record->length - sizeof *record};
}

void print_fields(document &out, const eeprom_record *record) {
  out.number("id", record->id);
  out.number("size", static_cast<int64_t>(payload_of(record).size()));
  out.number("element_size", record->id < std::size(element_sizes) ? element_sizes[record->id] : 0);
  out.bytes("bytes", payload_of(record));
}

int print_row(const eeprom_record *record) {
  listing->begin_group("record");
  print_fields(*listing, record);
  listing->end_group("record");
  return 0;
}

exit_status fail_with_name(const char *format, const char *name) {
  print_error(format, name);
  return failed;
}

exit_status list(const request &asked) {
  const store_session store(purpose::reading);
  if (!store) return failed;
  const bool is_whole = store.load();
  document out(asked.wanted_form(), "records");
  listing = &out;
  out.begin_list("records");
  eeprom_for_each(print_row);
  listing = nullptr;
  out.end_list();
  if (is_whole) return done;
  print_error("%s holds no whole image", store.name());
  return failed;
}

bool parse_id(const char *text, uint32_t &id) {
  char *end = nullptr;
  errno = 0;
  const unsigned long value = std::strtoul(text, &end, 10);
  id = static_cast<uint32_t>(value);
  return errno == 0 && *text >= '0' && *text <= '9' && *end == '\0' && value <= max_id;
}

int digit_value(char digit) {
  const char *const digits = "0123456789abcdef";
  const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit + ('a' - 'A')) : digit;
  const char *place = lower != '\0' ? std::strchr(digits, lower) : nullptr;
  return place != nullptr ? static_cast<int>(place - digits) : -1;
}

// Turns the digits into bytes in place; 0 if they are not digits, or no whole bytes.
uint32_t parse_bytes(char *text) {
  const size_t length = std::strlen(text);
  for (size_t i = 0; i < length; i += 2) {
    const int high = digit_value(text[i]);
    const int low = digit_value(text[i + 1]);
    if (high < 0 || low < 0) return 0;
    text[i / 2] = static_cast<char>(high << 4 | low);
  }
  return static_cast<uint32_t>(length / 2);
}

// A damaged image is not written over with what could be read of it. An image that could not be read is not taken for
// an empty store at once: a fault that passes must not cost the other records.
bool load_to_change(const store_session &store) { return store.load() || store.load() || is_empty(); }

exit_status refuse_damaged(const store_session &store) {
  print_error("the image in %s is damaged: only import and restore replace it", store.name());
  return failed;
}

// The library does not tell how it went: the store is loaded again.
exit_status save(const store_session &store) {
  size_t size = 0;
  size_t stored_size = 0;
  const auto table = copy_table(size);
  eeprom_write();
  store.load();
  const auto stored = copy_table(stored_size);
  if (!table || !stored) {
    print_error("no memory to compare the store with");
    return failed;
  }
  if (size == stored_size && std::memcmp(table.get(), stored.get(), size) == 0) return done;
  print_error("%s does not hold the new records: they are too long, or it cannot be written", store.name());
  return failed;
}

exit_status get(const request &asked) {
  uint32_t id;
  if (!parse_id(asked.arguments[1], id)) return wrong_usage;
  const store_session store(purpose::reading);
  if (!store) return failed;
  store.load();
  const eeprom_record *record = record_of(id);
  if (record == nullptr) return fail_with_name("no record %s", asked.arguments[1]);
  if (asked.has(json_option)) {
    document out(form::json, "record");
    print_fields(out, record);
    return done;
  }
  for (const uint8_t each : payload_of(record)) std::printf("%02x", each);
  std::putchar('\n');
  return done;
}

exit_status set(const request &asked) {
  uint32_t id;
  const uint32_t size = parse_bytes(asked.arguments[2]);
  if (size == 0 || !parse_id(asked.arguments[1], id)) return wrong_usage;
  const store_session store(purpose::changing);
  if (!store) return failed;
  if (!load_to_change(store)) return refuse_damaged(store);
  if (eeprom_update(static_cast<int32_t>(id), asked.arguments[2], size) != 0) {
    return fail_with_name("record %s is too long", asked.arguments[1]);
  }
  return save(store);
}

// A table without records is not written, so the last record goes with the image that holds it.
exit_status remove(const request &asked) {
  uint32_t id;
  if (!parse_id(asked.arguments[1], id)) return wrong_usage;
  const store_session store(purpose::changing);
  if (!store) return failed;
  if (!load_to_change(store)) return refuse_damaged(store);
  if (record_of(id) == nullptr) return fail_with_name("no record %s", asked.arguments[1]);
  eeprom_delete(id);
  if (!is_empty()) return save(store);
  return store.erase() ? done : fail_with_name("cannot take the last image out of %s", store.name());
}

// The length that an image file claims to have; 0 if it cannot be read.
uint32_t claimed_length(const char *path) {
  image_header header;
  const unique_file file{std::fopen(path, "re")};
  return file && std::fread(&header, sizeof header, 1, file.get()) == 1 ? header.total_length.value() : 0;
}

// Is the file an image alone, whole and without an id twice?
bool is_image(const char *path) {
  eeprom_free();
  eeprom_read(path);
  const bool is_whole = !is_empty() && image_size() == claimed_length(path);
  eeprom_free();
  return is_whole;
}

exit_status import(const request &asked) {
  const char *path = asked.arguments[1];
  if (!is_image(path)) return fail_with_name("\"%s\" holds no whole image, or one with an id twice", path);
  const store_session store(purpose::changing);
  if (!store) return failed;
  if (!load_to_change(store)) eeprom_free();
  eeprom_read(path);
  return save(store);
}

exit_status restore(const request &asked) {
  const char *path = asked.arguments[1];
  const store_session store(purpose::changing);
  if (!store) return failed;
  const unique_fd backup{open(path, O_RDONLY | O_CLOEXEC)};
  if (!backup) {
    print_error("cannot open \"%s\": %s", path, std::strerror(errno));
    return failed;
  }
  return load_image(backup.get()) ? save(store) : fail_with_name("\"%s\" holds no whole image", path);
}

int write_record(const eeprom_record *record) {
  const big_endian<uint16_t> head[] = {record->length, record->id};
  std::fwrite(head, sizeof head, 1, image_file);
  return static_cast<int>(std::fwrite(record + 1, padded_size(record->length) - sizeof *record, 1, image_file));
}

bool write_image(FILE *file) {
  const image_header header{image_magic, image_size(), uint16_t{1}, uint16_t{0}, 0U};
  image_file = file;
  std::fwrite(&header, sizeof header, 1, file);
  eeprom_for_each(write_record);
  return std::fflush(file) == 0 && std::ferror(file) == 0;
}

exit_status export_image(const request &asked) {
  const char *path = asked.arguments[1];
  const store_session store(purpose::reading);
  if (!store) return failed;
  if (!store.load()) return fail_with_name("%s holds no whole image", store.name());
  unique_fd fd{open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666)};
  if (fd && store.is_same(fd.get())) return fail_with_name("\"%s\" is the store itself", path);
  // What is no file has no size: EINVAL.
  const bool is_ready = fd && (ftruncate(fd.get(), 0) == 0 || errno == EINVAL);
  const unique_file file{is_ready ? fdopen(fd.get(), "w") : nullptr};
  if (file) static_cast<void>(fd.release());
  if (file && write_image(file.get())) return done;
  print_error("cannot write \"%s\": %s", path, std::strerror(errno));
  return failed;
}

constexpr struct {
  const char *name;
  const char *operands;
  const char *purpose;
  int count;         // of the operands
  uint8_t required;  // options that it does not run without
  uint8_t allowed;
  exit_status (*run)(const request &asked);
} actions[] = {
    {"get", "ID", "prints the bytes of a record", 1, 0, json_option, get},
    {"set", "ID HEX", "puts a record of these bytes into the store", 2, write_option, write_option, set},
    {"delete", "ID", "takes a record out of the store", 1, write_option, write_option, remove},
    {"export", "FILE", "writes all records to a file, as an image", 1, 0, 0, export_image},
    {"import", "FILE", "merges the records of such an image into the store", 1, write_option, write_option, import},
    {"restore", "FILE", "the records of a copy of a store, and no others", 1, write_option, write_option, restore},
};

}  // namespace

void print_record_actions() {
  std::puts("\nactions:");
  for (const auto &each : actions) {
    const int width = std::printf("  %s %s%s", each.name, each.operands, each.required != 0 ? " --write" : "");
    std::printf("%*s%s\n", 26 - width, "", each.purpose);
  }
}

exit_status records_command(const request &asked) {
  if (asked.count == 0 && !asked.has(write_option)) return list(asked);
  const char *const name = asked.count != 0 ? asked.arguments[0] : "--write";
  for (const auto &each : actions) {
    if (std::strcmp(each.name, name) != 0) continue;
    const bool is_complete = asked.count - 1 == each.count && (asked.options & each.required) == each.required &&
                             (asked.options & ~each.allowed) == 0;
    const exit_status status = is_complete ? each.run(asked) : wrong_usage;
    if (status == wrong_usage) {
      std::fprintf(stderr, "usage: devfacts records %s %s%s\n", each.name, each.operands,
                   each.required != 0 ? " --write" : "");
    }
    return status;
  }
  print_error("no such action: records %s", name);
  return wrong_usage;
}

}  // namespace devfacts::tool
