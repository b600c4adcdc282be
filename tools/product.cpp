// The product's identity and capabilities as one document, and single values of the two configuration files.
#include <devfacts/product.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "command.h"
#include "description.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr char product_file[] = "/etc/product";
constexpr char configuration_file[] = "/tmp/system.cfg";

// The bytes of a line that count; a longer version is cut.
constexpr int line_size = 256;

void print(document &out, const char *name, const caps_string &slot) { out.text(name, slot.value); }

// The store gives negative numbers as their two's complement.
void print(document &out, const char *name, const caps_u32 &slot) {
  out.number(name, static_cast<int32_t>(slot.value), slot.present != 0);
}

void print(document &out, const char *name, const caps_bool &slot) {
  out.boolean(name, slot.value != 0, slot.present != 0);
}

template <class Row>
void print_rows(document &out, const char *list, const char *element, void (*print_row)(document &, const Row &),
                const Row *rows, int32_t count) {
  out.begin_list(list);
  for (const Row *row = rows; row != rows + count; ++row) {
    out.begin_group(element);
    print_row(out, *row);
    out.end_group(element);
  }
  out.end_list();
}

void print_range(document &out, const caps_freq_range &range) {
  print(out, "range", range.range);
  out.number("low", range.low);
  out.number("high", range.high);
  print(out, "max_eirp", range.max_eirp);
  print(out, "max_txpower", range.max_txpower);
  print(out, "max_width", range.max_width);
  print(out, "dfs_required", range.dfs_required);
  print(out, "range_limits", range.range_limits);
}

void print_radio(document &out, const caps_radio &radio) {
  print(out, "master", radio.master);
  print(out, "ieee_band", radio.ieee_band);
  print(out, "allowed_modulations", radio.allowed_modulations);
  print(out, "txpower_offset", radio.txpower_offset);
  print(out, "min_txpower", radio.min_txpower);
  print(out, "antenna_gain", radio.antenna_gain);
  print(out, "ignore_crr", radio.ignore_crr);
  print(out, "cpe_fixed_channels", radio.cpe_fixed_channels);
  print(out, "frequency_offset", radio.frequency_offset);
  print_rows(out, "frequencies", "frequency", print_range, radio.ranges, radio.range_count);
  print(out, "band_edge_low", radio.band_edge_low);
  print(out, "band_edge_middle", radio.band_edge_middle);
  print(out, "band_edge_high", radio.band_edge_high);
}

void print_limit(document &out, const caps_limit_freq &limit) {
  print(out, "frequency", limit.frequency);
  print(out, "dfs_required", limit.dfs_required);
  print(out, "max_txpower", limit.max_txpower);
  print(out, "max_eirp", limit.max_eirp);
  print(out, "allowed_widths", limit.allowed_widths);
}

void print_limit_table(document &out, const caps_limit_table &table) {
  print(out, "table_name", table.table_name);
  print_rows(out, "limits", "limit", print_limit, table.freqs, table.freq_count);
}

void print_led(document &out, const caps_led &led) {
  print(out, "devname", led.devname);
  print(out, "name", led.name);
}

void print_capabilities(document &out, const product_caps_t &caps) {
  print(out, "id", caps.id);
  print(out, "name", caps.name);
  print(out, "hardware", caps.hardware);
  print(out, "enterprise_name", caps.enterprise_name);
  print(out, "countrycode", caps.countrycode);
  print(out, "enterprise_oid", caps.enterprise_oid);
  print_rows(out, "radios", "radio", print_radio, caps.radios, caps.radio_count);
  print_rows(out, "limit_tables", "limit_table", print_limit_table, caps.limit_tables, caps.limit_table_count);
  print(out, "led_power_name", caps.led_power_name);
  print(out, "led_blinkled_name", caps.led_blinkled_name);
  print_rows(out, "led_lan", "led_lan", print_led, caps.led_lan, caps.led_lan_count);
  print_rows(out, "led_rssi", "led_rssi", print_led, caps.led_rssi, caps.led_rssi_count);
  print(out, "protocol_name", caps.protocol_name);
  print(out, "pppoe_filter_control", caps.pppoe_filter_control);
  print(out, "arpnat_behind_dhcp_snooper", caps.arpnat_behind_dhcp_snooper);
}

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
  print_capabilities(out, *caps);
  out.end_group("capabilities");
}

// Why a file could not be loaded.
exit_status refuse_file(const char *path) {
  if (access(path, R_OK) != 0) {
    print_error("cannot read %s: %s", path, std::strerror(errno));
  } else {
    print_error("cannot load %s: line %u is not KEY=VALUE", path, malformed_line(path));
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
