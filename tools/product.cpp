// The product's identity and capabilities as one XML document, and single values of the two configuration files.
#include <devfacts/core.h>
#include <devfacts/product.h>

#include <cstddef>
#include <cstdio>

#include "command.h"

namespace devfacts::tool {
namespace {

// The bytes of a line that count; a longer version is cut.
constexpr int line_size = 256;

void print(const char *name, const caps_string &slot) { xml_str_esc_item(name, slot.value); }

// The store gives negative numbers as their two's complement.
void print(const char *name, const caps_u32 &slot) {
  xml_int_item_opt(name, static_cast<int32_t>(slot.value), slot.present);
}

void print(const char *name, const caps_bool &slot) {
  xml_str_item(name, slot.present == 0 ? nullptr : slot.value != 0 ? "true" : "false");
}

template <class Row>
void print_rows(const char *element, void (*print_row)(const Row &), const Row *rows, int32_t count) {
  for (const Row *row = rows; row != rows + count; ++row) {
    std::printf(" <%s>\n", element);
    print_row(*row);
    std::printf(" </%s>\n", element);
  }
}

void print_range(const caps_freq_range &range) {
  print("range", range.range);
  xml_int_item("low", range.low);
  xml_int_item("high", range.high);
  print("max_eirp", range.max_eirp);
  print("max_txpower", range.max_txpower);
  print("max_width", range.max_width);
  print("dfs_required", range.dfs_required);
  print("range_limits", range.range_limits);
}

void print_radio(const caps_radio &radio) {
  print("master", radio.master);
  print("ieee_band", radio.ieee_band);
  print("allowed_modulations", radio.allowed_modulations);
  print("txpower_offset", radio.txpower_offset);
  print("min_txpower", radio.min_txpower);
  print("antenna_gain", radio.antenna_gain);
  print("ignore_crr", radio.ignore_crr);
  print("cpe_fixed_channels", radio.cpe_fixed_channels);
  print("frequency_offset", radio.frequency_offset);
  print_rows("frequency", print_range, radio.ranges, radio.range_count);
  print("band_edge_low", radio.band_edge_low);
  print("band_edge_middle", radio.band_edge_middle);
  print("band_edge_high", radio.band_edge_high);
}

void print_limit(const caps_limit_freq &limit) {
  print("frequency", limit.frequency);
  print("dfs_required", limit.dfs_required);
  print("max_txpower", limit.max_txpower);
  print("max_eirp", limit.max_eirp);
  print("allowed_widths", limit.allowed_widths);
}

void print_limit_table(const caps_limit_table &table) {
  print("table_name", table.table_name);
  print_rows("limit", print_limit, table.freqs, table.freq_count);
}

void print_led(const caps_led &led) {
  print("devname", led.devname);
  print("name", led.name);
}

void print_capabilities(const product_caps_t &caps) {
  print("id", caps.id);
  print("name", caps.name);
  print("hardware", caps.hardware);
  print("enterprise_name", caps.enterprise_name);
  print("countrycode", caps.countrycode);
  print("enterprise_oid", caps.enterprise_oid);
  print_rows("radio", print_radio, caps.radios, caps.radio_count);
  print_rows("limit_table", print_limit_table, caps.limit_tables, caps.limit_table_count);
  print("led_power_name", caps.led_power_name);
  print("led_blinkled_name", caps.led_blinkled_name);
  print_rows("led_lan", print_led, caps.led_lan, caps.led_lan_count);
  print_rows("led_rssi", print_led, caps.led_rssi, caps.led_rssi_count);
  print("protocol_name", caps.protocol_name);
  print("pppoe_filter_control", caps.pppoe_filter_control);
  print("arpnat_behind_dhcp_snooper", caps.arpnat_behind_dhcp_snooper);
}

int32_t detected_cpu() {
  for (int32_t id = CPU_ADM5120; id <= CPU_RT3352; ++id) {
    if (cpu_detect(id) != 0) return id;
  }
  return CPU_NONE;
}

void print_identity() {
  char line[line_size];
  xml_str_esc_item("product_name", product_name());
  xml_str_esc_item("manufacturer", product_manufacturer());
  xml_str_esc_item("serial_no", read_serial_no(line, sizeof line));
  xml_str_esc_item("firmware_version", read_firmware_version(line, sizeof line));
  const int32_t cpu = detected_cpu();
  xml_int_item_opt("cpu", cpu, cpu != CPU_NONE);
  xml_str_item("cpu_vendor", cpu_vendor());
}

exit_status print_document() {
  const product_caps_t *caps = product_caps_get();
  std::puts("<product>");
  print_identity();
  if (caps != nullptr) {
    std::puts(" <capabilities>");
    print_capabilities(*caps);
    std::puts(" </capabilities>");
  }
  std::puts("</product>");
  if (caps != nullptr) return done;
  std::fputs("devfacts: cannot load the product description\n", stderr);
  return failed;
}

exit_status print_value(const char *key, const char *value) {
  if (value != nullptr) return std::puts(value), done;
  std::fprintf(stderr, "devfacts: no value of \"%s\"\n", key);
  return failed;
}

}  // namespace

exit_status product(char **arguments) {
  const char *key = arguments[0];
  return key == nullptr ? print_document() : print_value(key, prod_spec_get(key));
}

exit_status config(char **arguments) { return print_value(arguments[0], sysconf_get(arguments[0])); }

}  // namespace devfacts::tool
