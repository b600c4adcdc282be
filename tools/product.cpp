// The product's identity and capabilities as one document, and single values of the two configuration files.
#include "product.h"

#include <devfacts/product.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <type_traits>

#include "command.h"
#include "description.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr char product_file[] = "/etc/product";
constexpr char configuration_file[] = "/tmp/system.cfg";

// The bytes of a line that count; a longer version is cut.
constexpr int line_size = 256;

enum class kind : uint8_t { string, u32, boolean, bound, list };

template <class Slot>
struct kind_of;
template <>
struct kind_of<caps_string> : std::integral_constant<kind, kind::string> {};
template <>
struct kind_of<caps_u32> : std::integral_constant<kind, kind::u32> {};
template <>
struct kind_of<caps_bool> : std::integral_constant<kind, kind::boolean> {};
template <>
struct kind_of<int32_t> : std::integral_constant<kind, kind::bound> {};

struct list;

// A field of a record; one that is a list has its rows described.
struct field {
  char name[27];  // in place: no relocation
  kind type;
  uint16_t offset;
  const list *rows = nullptr;
};

struct list {
  const char *element;
  uint16_t rows_at;
  uint16_t count_at;
  uint16_t row_size;
  std::span<const field> fields;
};

#define FIELD(record, member) \
  { #member, kind_of < decltype(record::member)> ::value, offsetof(record, member) }
#define ROWS(record, rows, count, row) offsetof(record, rows), offsetof(record, count), sizeof(row)

constexpr field range_fields[] = {
    FIELD(caps_freq_range, range),        FIELD(caps_freq_range, low),          FIELD(caps_freq_range, high),
    FIELD(caps_freq_range, max_eirp),     FIELD(caps_freq_range, max_txpower),  FIELD(caps_freq_range, max_width),
    FIELD(caps_freq_range, dfs_required), FIELD(caps_freq_range, range_limits),
};
constexpr list ranges = {"frequency", ROWS(caps_radio, ranges, range_count, caps_freq_range), range_fields};

constexpr field radio_fields[] = {
    FIELD(caps_radio, master),
    FIELD(caps_radio, ieee_band),
    FIELD(caps_radio, allowed_modulations),
    FIELD(caps_radio, txpower_offset),
    FIELD(caps_radio, min_txpower),
    FIELD(caps_radio, antenna_gain),
    FIELD(caps_radio, ignore_crr),
    FIELD(caps_radio, cpe_fixed_channels),
    FIELD(caps_radio, frequency_offset),
    {"frequencies", kind::list, 0, &ranges},
    FIELD(caps_radio, band_edge_low),
    FIELD(caps_radio, band_edge_middle),
    FIELD(caps_radio, band_edge_high),
};
constexpr list radios = {"radio", ROWS(product_caps_t, radios, radio_count, caps_radio), radio_fields};

constexpr field limit_fields[] = {
    FIELD(caps_limit_freq, frequency), FIELD(caps_limit_freq, dfs_required),   FIELD(caps_limit_freq, max_txpower),
    FIELD(caps_limit_freq, max_eirp),  FIELD(caps_limit_freq, allowed_widths),
};
constexpr list limits = {"limit", ROWS(caps_limit_table, freqs, freq_count, caps_limit_freq), limit_fields};

constexpr field table_fields[] = {FIELD(caps_limit_table, table_name), {"limits", kind::list, 0, &limits}};
constexpr list tables = {"limit_table", ROWS(product_caps_t, limit_tables, limit_table_count, caps_limit_table),
                         table_fields};

constexpr field led_fields[] = {FIELD(caps_led, devname), FIELD(caps_led, name)};
constexpr list led_lan = {"led_lan", ROWS(product_caps_t, led_lan, led_lan_count, caps_led), led_fields};
constexpr list led_rssi = {"led_rssi", ROWS(product_caps_t, led_rssi, led_rssi_count, caps_led), led_fields};

constexpr field capability_fields[] = {
    FIELD(product_caps_t, id),
    FIELD(product_caps_t, name),
    FIELD(product_caps_t, hardware),
    FIELD(product_caps_t, enterprise_name),
    FIELD(product_caps_t, countrycode),
    FIELD(product_caps_t, enterprise_oid),
    {"radios", kind::list, 0, &radios},
    {"limit_tables", kind::list, 0, &tables},
    FIELD(product_caps_t, led_power_name),
    FIELD(product_caps_t, led_blinkled_name),
    {"led_lan", kind::list, 0, &led_lan},
    {"led_rssi", kind::list, 0, &led_rssi},
    FIELD(product_caps_t, protocol_name),
    FIELD(product_caps_t, pppoe_filter_control),
    FIELD(product_caps_t, arpnat_behind_dhcp_snooper),
};

#undef FIELD
#undef ROWS

template <class T>
const T &at(const void *record, size_t offset) {
  return *reinterpret_cast<const T *>(static_cast<const char *>(record) + offset);
}

void print_list(document &out, const char *name, const list &rows, const void *owner);

// NOLINTBEGIN(misc-no-recursion): a list in a list is as deep as it goes
void print_field(document &out, const field &each, const void *record) {
  switch (each.type) {
    case kind::string: return out.text(each.name, at<caps_string>(record, each.offset).value);
    case kind::u32: {  // the store returns negative numbers as their two's complement
      const auto &slot = at<caps_u32>(record, each.offset);
      return out.number(each.name, static_cast<int32_t>(slot.value), slot.present != 0);
    }
    case kind::boolean: {
      const auto &slot = at<caps_bool>(record, each.offset);
      return out.boolean(each.name, slot.value != 0, slot.present != 0);
    }
    case kind::bound: {
      const int32_t bound = at<int32_t>(record, each.offset);
      return out.number(each.name, bound, bound != 0);
    }
    case kind::list: return print_list(out, each.name, *each.rows, record);
  }
}

void print_list(document &out, const char *name, const list &rows, const void *owner) {
  const auto *row = at<const char *>(owner, rows.rows_at);
  out.begin_list(name);
  for (int32_t i = at<int32_t>(owner, rows.count_at); i != 0; --i, row += rows.row_size) {
    out.begin_group(rows.element);
    for (const field &each : rows.fields) print_field(out, each, row);
    out.end_group(rows.element);
  }
  out.end_list();
}

// NOLINTEND(misc-no-recursion)

int32_t detected_cpu() {
  for (int32_t id = CPU_ADM5120; id <= CPU_RT3352; ++id) {
    if (cpu_detect(id) != 0) return id;
  }
  return CPU_NONE;
}

void print_identity(document &out) {
  char line[line_size];
  const int32_t cpu = detected_cpu();
  out.text("product_name", product_name());
  out.text("manufacturer", product_manufacturer());
  out.text("serial_no", read_serial_no(line, sizeof line));
  out.text("firmware_version", read_firmware_version(line, sizeof line));
  out.number("cpu", cpu, cpu != CPU_NONE);
  out.text("cpu_vendor", cpu_vendor());
}

void print_document(form wanted, const product_caps_t *caps) {
  document out(wanted, "product");
  print_identity(out);
  if (caps == nullptr) {
    out.no_group("capabilities");
    return;
  }
  out.begin_group("capabilities");
  for (const field &each : capability_fields) print_field(out, each, caps);
  out.end_group("capabilities");
}

// Why a file could not be loaded. Another process may have changed it since.
exit_status refuse_file(const char *path) {
  struct stat found {};
  if (access(path, R_OK) != 0 || stat(path, &found) != 0) {
    print_error("cannot read %s: %s", path, std::strerror(errno));
  } else if (!S_ISREG(found.st_mode)) {
    print_error("cannot load %s: it is not a regular file", path);
  } else if (const unsigned line = malformed_line(path); line != 0) {
    print_error("cannot load %s: line %u is not KEY=VALUE", path, line);
  } else {
    print_error("cannot load %s: it is larger than 1 MiB, or there is no memory", path);
  }
  return failed;
}

exit_status print_key(const request &asked, const char *path, bool is_open, const char *(*get)(const char *key)) {
  const char *const key = asked.arguments[0];
  if (!is_open) return refuse_file(path);
  const char *const value = get(key);
  if (value == nullptr) {
    print_error("no key \"%s\" in %s", key, path);
    return failed;
  }
  if (!asked.has(json_option)) {
    print_value(value);
    return done;
  }
  document out(form::json, "value");
  out.text("key", key);
  out.text("value", value);
  return done;
}

}  // namespace

char *known_serial_no(char *buffer, uint32_t length) {
  return access("/etc/serial-no", R_OK) == 0 ? read_serial_no(buffer, length) : nullptr;
}

exit_status product_command(const request &asked) {
  if (asked.has(check_option)) return check_description(asked.count != 0 ? asked.arguments[0] : product_file);
  if (asked.count != 0) return print_key(asked, product_file, prod_spec_open() == 0, prod_spec_get);
  const product_caps_t *caps = product_caps_get();
  print_document(asked.wanted_form(), caps);
  return caps != nullptr ? done : refuse_file(product_file);
}

exit_status config_command(const request &asked) {
  return print_key(asked, configuration_file, sysconf_open() == 0, sysconf_get);
}

}  // namespace devfacts::tool
