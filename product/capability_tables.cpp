#include "product/capability_tables.h"

#include <cstdio>

using namespace devfacts;

namespace {

// Declared for the three slots only: a field of any other type does not compile.
consteval slot_type type_of(const caps_string & /*slot*/) { return slot_type::string; }
consteval slot_type type_of(const caps_u32 & /*slot*/) { return slot_type::u32; }
consteval slot_type type_of(const caps_bool & /*slot*/) { return slot_type::boolean; }

#define FIELD(record, member, name) \
  { name, offsetof(record, member), type_of(decltype(record::member){}) }

constexpr caps_field product_fields[] = {
    FIELD(product_caps_t, id, "id"),
    FIELD(product_caps_t, name, "name"),
    FIELD(product_caps_t, hardware, "hardware"),
    FIELD(product_caps_t, enterprise_name, "enterprise-name"),
    FIELD(product_caps_t, countrycode, "countrycode"),
    FIELD(product_caps_t, enterprise_oid, "enterprise-oid"),
    FIELD(product_caps_t, protocol_name, "protocol-name"),
};

constexpr caps_field radio_fields[] = {
    FIELD(caps_radio, master, "master"),
    FIELD(caps_radio, ieee_band, "ieee-band"),
    FIELD(caps_radio, allowed_modulations, "allowed-modulations"),
    FIELD(caps_radio, txpower_offset, "txpower-offset"),
    FIELD(caps_radio, min_txpower, "min-txpower"),
    FIELD(caps_radio, antenna_gain, "antenna-gain"),
    FIELD(caps_radio, frequency_offset, "frequency-offset"),
    FIELD(caps_radio, ignore_crr, "ignore-crr"),
    FIELD(caps_radio, cpe_fixed_channels, "cpe.fixed-channels"),
    FIELD(caps_radio, band_edge_low, "band-edges.low"),
    FIELD(caps_radio, band_edge_middle, "band-edges.middle"),
    FIELD(caps_radio, band_edge_high, "band-edges.high"),
};

constexpr caps_field range_fields[] = {
    FIELD(caps_freq_range, range_limits, "range-limits"), FIELD(caps_freq_range, max_txpower, "max-txpower"),
    FIELD(caps_freq_range, max_eirp, "max-eirp"),         FIELD(caps_freq_range, max_width, "max-width"),
    FIELD(caps_freq_range, dfs_required, "dfs-required"), FIELD(caps_freq_range, range, "range"),
};

constexpr caps_field limit_table_fields[] = {
    FIELD(caps_limit_table, table_name, "table-name"),
};

constexpr caps_field limit_freq_fields[] = {
    FIELD(caps_limit_freq, dfs_required, "dfs-required"), FIELD(caps_limit_freq, max_txpower, "max-txpower"),
    FIELD(caps_limit_freq, max_eirp, "max-eirp"),         FIELD(caps_limit_freq, allowed_widths, "allowed-widths"),
    FIELD(caps_limit_freq, frequency, "frequency"),
};

constexpr caps_field led_fields[] = {
    FIELD(product_caps_t, led_power_name, "power.name"),
    FIELD(product_caps_t, led_blinkled_name, "blinkled.name"),
};

constexpr caps_field led_lan_fields[] = {
    FIELD(caps_led, devname, "devname"),
    FIELD(caps_led, name, "name"),
};

constexpr caps_field led_rssi_fields[] = {
    FIELD(caps_led, devname, "devname"),
    FIELD(caps_led, name, "names"),
};

constexpr caps_field feature_fields[] = {
    FIELD(product_caps_t, pppoe_filter_control, "pppoe-filter-control"),
    FIELD(product_caps_t, arpnat_behind_dhcp_snooper, "arpnat-behind-dhcp-snooper"),
};

#undef FIELD

// The text has the centres of the outermost channels; the bounds are this far outside.
constexpr int64_t margin = 10;

void work_out_bounds(void *row) {
  auto *range = static_cast<caps_freq_range *>(row);
  int low = 0;
  int high = 0;
  char separator = '\0';
  if (range->range.present == 0) return;
  // NOLINTNEXTLINE(cert-err34-c): what sscanf takes for a range is one
  if (std::sscanf(range->range.value, " %d %c %d", &low, &separator, &high) != 3 || separator != '-') return;
  // Numbers at the ends of an int's range wrap around.
  range->low = static_cast<int32_t>(low - margin);
  range->high = static_cast<int32_t>(high + margin);
}

// The place of a list in its owner, and the size of its rows.
#define ROWS(owner, count, rows, row) \
  .row_size = sizeof(row), .count_at = offsetof(owner, count), .rows_at = offsetof(owner, rows)

constexpr caps_list ranges{.suffix = "range",
                           ROWS(caps_radio, range_count, ranges, caps_freq_range),
                           .fields = range_fields,
                           .finish = work_out_bounds};
constexpr caps_list radios{.suffix = "master",
                           ROWS(product_caps_t, radio_count, radios, caps_radio),
                           .fields = radio_fields,
                           .inner = &ranges,
                           .inner_name = "frequency"};
constexpr caps_list limit_freqs{
    .suffix = "frequency", ROWS(caps_limit_table, freq_count, freqs, caps_limit_freq), .fields = limit_freq_fields};
constexpr caps_list limit_tables{.suffix = "table-name",
                                 ROWS(product_caps_t, limit_table_count, limit_tables, caps_limit_table),
                                 .fields = limit_table_fields,
                                 .inner = &limit_freqs,
                                 .inner_name = "table"};
constexpr caps_list led_lan{
    .suffix = "name", ROWS(product_caps_t, led_lan_count, led_lan, caps_led), .fields = led_lan_fields};
constexpr caps_list led_rssi{
    .suffix = "devname", ROWS(product_caps_t, led_rssi_count, led_rssi, caps_led), .fields = led_rssi_fields};

#undef ROWS

constexpr caps_section sections[] = {
    {"product", product_fields, nullptr}, {"radio", {}, &radios},    {"limits", {}, &limit_tables},
    {"led", led_fields, nullptr},         {"led.lan", {}, &led_lan}, {"led.rssi", {}, &led_rssi},
    {"feature", feature_fields, nullptr},
};

}  // namespace

constinit const std::span<const caps_section> devfacts::caps_sections = sections;
