// The configuration store's stand-in, and what the library makes of the product's files.
#include <devfacts/product.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <map>
#include <sstream>
#include <vector>

#include "product/cfg_store.h"
#include "support/device.h"
#include "support/faults.h"
#include "support/process.h"
#include "support/store.h"

namespace {

using namespace test;

std::string text(const char *value) { return value == nullptr ? "(none)" : value; }

TEST(store, lines) {
  const struct {
    std::string file, value;  // of the key a.b, which held "old"
    bool loads = true;
  } rows[] = {
      {"", "old"},
      {"a.b=1", "1"},
      {"a.b=1\r\n\r\nc=d", "1"},
      {" \ta.b= 1 = # \r\r\n", " 1 = # \r"},
      {"a.b=\n", ""},
      {"a.b=1\na.b.c=2\na.b=3\na.c=4\na.b=2\n", "2"},
      {"# =\n \t#\n \t\n\v#x\na.b=1\n", "1"},
      {"a.b=1\nc.d\n", "old", false},
      {"a.b=1\n=x\n", "old", false},
      {"a.b =1\n", "old", false},
      {"a.b=1\nc d=e", "old", false},
      {std::string("a.b=1\nc=\0d", 10), "old", false},
  };
  on_device([&] {
    for (const auto &row : rows) {
      const cfg_handle store = cfg_create();
      write_file("/f", "a.b=old\n");
      EXPECT_GE(cfg_read_file(store, "/f"), 0);
      const char *borrowed = cfg_get(store, "a.%c", 'b');
      write_file("/f", row.file);
      EXPECT_EQ(cfg_read_file(store, "/f") >= 0, row.loads) << row.file;
      EXPECT_EQ(text(cfg_get(store, "%s", "a.b")), row.value) << row.file;
      EXPECT_STREQ(borrowed, "old");
      cfg_destroy(store);
    }
    const cfg_handle store = cfg_create();
    mkdir("/folder", 0700), mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe", ""}) EXPECT_LT(cfg_read_file(store, path), 0) << path;
    EXPECT_EQ(cfg_key_exists(store, ""), 0);
    cfg_destroy(store);
    EXPECT_EQ(live_blocks(), 0);
  });
}

TEST(store, numbers_and_truths) {
  const struct {
    const char *text;
    uint32_t number, truth;
  } rows[] = {
      {"20", 20, 0}, {"-3", 0xfffffffd, 0}, {" 7dBm", 7, 0}, {"", 0, 0}, {"99999999999999999999", UINT32_MAX, 0},
      {"-2147483649", 0x80000000, 0}, {"1", 1, 1}, {"TrUe", 0, 1}, {"yes", 0, 1}, {"ON", 0, 1}, {"enabled", 0, 1},
      {"11", 11, 0}, {"no", 0, 0},
  };
  on_device([&] {
    const cfg_handle store = cfg_create();
    for (const auto &row : rows) {
      write_file("/f", std::string("k=") + row.text);
      cfg_read_file(store, "/f");
      EXPECT_EQ(cfg_get_uint32_value(store, 0, "k"), row.number) << row.text;
      EXPECT_EQ(cfg_get_bool_value(store, 0, "k"), row.truth) << row.text;
    }
    EXPECT_EQ(cfg_get_uint32_value(store, 0, "none") + cfg_get_bool_value(store, 0, "none"), 0U);
    cfg_destroy(store);
  });
}

std::string walk(cfg_handle store, const char *prefix, const char *suffix) {
  std::ostringstream seen;
  cfg_iterator *first = cfg_create_index_iterator(store, prefix, suffix);
  for (cfg_iterator *at = first; at != nullptr; at = at->next(at)) seen << at->index(at) << at->value(at) << " ";
  cfg_free_iterator(first);
  return seen.str();
}

TEST(store, walks_see_the_indices_of_their_own_place_alone) {
  on_device([] {
    write_file("/f", "r.10.m=a\nr.9.m=b\nr.2147483647.m=c\nr.0.m=d\nr.9.m=e\nr.01.m=x\nr.00.m=x\nr.-1.m=x\nr.+1.m=x\n"
               "r.2147483648.m=x\nr.4294967297.m=x\nr.1x.m=x\nr..m=x\nr.1.mm=x\nrr.1.m=x\ns.r.1.m=x\nr.2=x\nr.3.n.m=f\n"
               "r.0.t.5.m=g\nr.0.t.4.m=h\nr.1.t.6.m=i\nr.1.t.7.m=j\n");
    const cfg_handle store = cfg_create();
    EXPECT_EQ(cfg_read_file(store, "/f"), 0);
    EXPECT_EQ(walk(store, "r", "m"), "0d 9e 10a 2147483647c ");
    EXPECT_EQ(walk(store, "r.0.t", "m"), "4h 5g ");
    EXPECT_EQ(walk(store, "r", "t.6.m"), "1i ");
    EXPECT_EQ(walk(store, "r", "t"), "");
    cfg_destroy(store);
    EXPECT_EQ(live_blocks(), 0);
  });
}

TEST(store, is_large) {
  on_device([] {
    const std::string long_key(100000, 'k');
    std::string file = long_key + ".1.x=" + std::string(200000, 'v') + "\n";
    for (int i = 0; i < 10000; ++i) file += "r." + std::to_string(i * 7919 % 10000) + ".m=" + std::to_string(i) + "\n";
    write_file("/f", file);
    const cfg_handle store = cfg_create();
    ASSERT_EQ(cfg_read_file(store, "/f"), 0);
    for (int i = 0; i < 10000; ++i) EXPECT_EQ(text(cfg_get(store, "r.%d.m", i * 7919 % 10000)), std::to_string(i));
    EXPECT_EQ(walk(store, long_key.c_str(), "x").size(), 200002U);
    EXPECT_EQ(text(cfg_get(store, (long_key + ".1.x").c_str())).size(), 200000U);
    EXPECT_EQ(cfg_key_exists(store, "%s.1.x", long_key.c_str()), 0);
    EXPECT_EQ(walk(store, "r", "m").substr(0, 12), "00 17679 253");
    cfg_destroy(store);
  });
}

TEST(handles, a_missing_product_file_is_never_looked_for_again) {
  on_device([] {
    EXPECT_STREQ(product_name(), "product");
    write_file("/etc/product", "product.name=late\n");
    prod_spec_close();
    EXPECT_EQ(prod_spec_open(), -1);
    EXPECT_EQ(prod_spec_get_ctx(), nullptr);
    EXPECT_STREQ(product_name(), "product");
    EXPECT_STREQ(product_manufacturer(), "manufacturer");
    EXPECT_EQ(asked(), "");
    EXPECT_EQ(sysconf_get("a.b"), nullptr);
    EXPECT_EQ(asked(), "create\nread /tmp/system.cfg\ndestroy\n");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_STREQ(product_caps.name.value, "late");
  });
}

TEST(handles, open_once_and_try_again_after_failures) {
  const struct {
    const char *path;
    int (*open)();
    void (*close)();
    cfg_handle (*context)();
    const char *(*get)(const char *);
  } families[] = {{"/tmp/system.cfg", sysconf_open, sysconf_close, sysconf_get_ctx, sysconf_get},
                  {"/etc/product", prod_spec_open, prod_spec_close, prod_spec_get_ctx, prod_spec_get}};
  for (const auto &family : families) {
    on_device([&] {
      const std::string loading = std::string("create\nread ") + family.path + "\n";
      const std::string failing = loading + "destroy\n";
      family.close();
      write_file(family.path, "no entry\n");
      EXPECT_EQ(family.open(), -1);
      EXPECT_EQ(family.context(), nullptr);
      EXPECT_EQ(asked(), failing + failing);
      write_file(family.path, "a.b=1\nproduct.name=\n");
      fail("cfg_create", 1, 0);
      EXPECT_EQ(family.open(), -1);
      EXPECT_EQ(asked(), "create\n");
      EXPECT_STREQ(family.get("a.b"), "1");
      EXPECT_EQ(asked(), loading + "get a.b\n");
      const cfg_handle context = family.context();
      write_file(family.path, "a.b=2\n");
      EXPECT_EQ(family.open(), 0);
      EXPECT_EQ(family.context(), context);
      EXPECT_EQ(family.get("none"), nullptr);
      EXPECT_EQ(family.get("%n%s"), nullptr);
      EXPECT_EQ(asked(), "get none\n");
      EXPECT_STREQ(product_name(), family.open == prod_spec_open ? "" : "product");
      family.close();
      family.close();
      EXPECT_STREQ(family.get("a.b"), "2");
      family.close();
      EXPECT_EQ(live_blocks(), 0);
    });
  }
}

TEST(identity, lines_go_into_buffers_of_any_length_or_not_at_all) {
  const std::string digits(16, '0');
  const std::string line63(63, 'x');
  const struct {
    std::string file;  // "-": none
    size_t length;
    std::string serial, version;
  } rows[] = {
      {"-", 17, digits, "(none)"},        {"-", 16, "(none)", "(none)"},    {"", 17, "(none)", "(none)"},
      {"ABC\n", 4, "ABC", "ABC"},         {"ABC \r\nD", 3, "(none)", "AB"}, {"ABC", 1, "(none)", ""},
      {" \t \n", 1, "", ""},              {"\nX", 9, "", ""},               {std::string("A\0BC", 4), 2, "A", "A"},
      {"A \n", 2, "A", "A"},              {line63 + "yz\n", 64, line63, line63},
      {line63 + "yz\n", 63, "(none)", line63.substr(1)},
  };
  on_device([&] {
    for (const auto &row : rows) {
      if (row.file != "-") write_file("/etc/serial-no", row.file), write_file("/usr/lib/version", row.file);
      std::string room(row.length, '?');
      EXPECT_EQ(text(read_serial_no((room + "!").data(), static_cast<uint32_t>(row.length))), row.serial) << row.file;
      const char *serial = read_serial_no(room.data(), static_cast<uint32_t>(row.length));
      const std::string kept = serial == nullptr ? "" : row.serial;
      EXPECT_EQ(room, kept + std::string(row.length - kept.size(), '\0')) << row.file;
      std::vector<char> exact(row.length);  // so that the sanitizer sees a byte too many
      EXPECT_EQ(text(read_firmware_version(exact.data(), static_cast<int>(row.length))), row.version) << row.file;
    }
    char untouched = '?';
    EXPECT_EQ(read_serial_no(&untouched, 0), nullptr);
    EXPECT_EQ(read_serial_no(nullptr, 9), nullptr);
    EXPECT_EQ(read_firmware_version(&untouched, 0), nullptr);
    EXPECT_EQ(read_firmware_version(&untouched, -1), nullptr);
    EXPECT_EQ(untouched, '?');
    for (const char *path : {"/etc/serial-no", "/usr/lib/version"}) remove(path), mkdir(path, 0700);
    char room[17];
    EXPECT_EQ(read_serial_no(room, sizeof room), nullptr);
    EXPECT_EQ(read_firmware_version(room, sizeof room), nullptr);
  });
}

TEST(identity, the_chip_is_the_first_of_the_table_that_the_version_names) {
  const struct {
    std::string version;
    int32_t id;
  } rows[] = {
      {"x.adm5120", 1}, {"ar2316", 2}, {"ar2317", 3}, {"ar5312", 4}, {"v2.rt2880.1", 5}, {"SL3512", 6}, {"x86", 7},
      {"xscale", 8}, {"rt3052", 9}, {"rt3050-1", 10}, {"rt3352", 11}, {"rt3050 rt3052 adm5120", 1}, {"x86 rt3352", 11},
      {"x86SL3512", 6}, {std::string(4089, '.') + "rt3050", 10},
  };
  for (const auto &row : rows) {
    on_device([&] {
      EXPECT_EQ(cpu_detect(-1), 1);
      for (const std::string &none : {std::string(), std::string("sl3512 RT3050"), std::string(4090, '.') + "rt3050"}) {
        write_file("/usr/lib/version", none);
        for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == -1) << none;
      }
      write_file("/usr/lib/version", row.version);
      EXPECT_EQ(cpu_detect(0), 0);
      write_file("/usr/lib/version", row.id == 1 ? "rt3052" : "adm5120");
      for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == row.id) << row.version;
    });
  }
}

// A whole product file, each key with a value of its own, and the calls that read it, in the order of reading.
struct whole_product {
  std::string file, calls = "create\nread /etc/product\n";
  std::map<std::string, std::string> values;

  // Keys "getter:name ..." below a prefix.
  void fields(const std::string &prefix, const std::string &names) {
    std::istringstream words(names);
    for (std::string word; words >> word;) {
      const std::string getter = word.substr(0, word.find(':'));
      const std::string key = prefix + word.substr(word.find(':') + 1);
      values[key] = getter == "bool" ? "on" : std::to_string(100 + values.size());
      file = key + "=" + values[key] + "\n" + file;  // the last is read first
      calls += "exists " + key + "\n" + getter + " " + key + "\n";
    }
  }
  void list(const std::string &prefix, const char *suffix, const std::string &names, const char *inner = nullptr,
            const char *inner_suffix = nullptr, const std::string &inner_names = "") {
    calls += "walk " + prefix + " " + suffix + "\n";
    for (const char *index : {".0.", ".13."}) {
      fields(prefix + index, names);
      if (inner != nullptr) list(prefix + index + inner, inner_suffix, inner_names);
    }
    calls += "free\n";
  }
  whole_product() {
    fields("product.", "string:id string:name string:hardware string:enterprise-name string:countrycode "
           "string:enterprise-oid string:protocol-name");
    list("radio", "master", "string:master string:ieee-band string:allowed-modulations u32:txpower-offset u32:min-txpower "
         "u32:antenna-gain u32:frequency-offset bool:ignore-crr bool:cpe.fixed-channels u32:band-edges.low "
         "u32:band-edges.middle u32:band-edges.high", "frequency", "range", "string:range-limits u32:max-txpower "
         "u32:max-eirp u32:max-width string:dfs-required string:range");
    list("limits", "table-name", "string:table-name", "table", "frequency", "string:dfs-required string:max-txpower "
         "string:max-eirp string:allowed-widths u32:frequency");
    fields("led.", "string:power.name string:blinkled.name");
    list("led.lan", "name", "string:devname string:name");
    list("led.rssi", "devname", "string:devname string:names");
    fields("feature.", "bool:pppoe-filter-control bool:arpnat-behind-dhcp-snooper");
    calls += "destroy\n";
  }
};

// What the object holds, by key; the rows of its lists, "2:20" for two radios of which the second has no range; and the
// blocks that it keeps.
struct whole_object {
  std::map<std::string, std::string> values;
  std::string shape;
  long blocks = 0;

  std::string value(const caps_string &slot) { return blocks += slot.present, text(slot.value); }
  std::string value(const caps_u32 &slot) { return std::to_string(slot.value); }
  std::string value(const caps_bool &slot) { return slot.value == 1U << 31 ? "on" : "off"; }
  template <class... Slots>
  void fields(const std::string &prefix, const std::string &names, const Slots &...slots) {
    std::istringstream words(names);
    std::string name;
    ((words >> name, slots.present == 1 ? void(values[prefix + name] = value(slots)) : void()), ...);
  }
  template <class Row, class Visit>
  void list(const std::string &prefix, int32_t count, const Row *rows, Visit visit) {
    EXPECT_EQ(rows != nullptr, count != 0) << prefix;
    blocks += rows != nullptr;
    shape += std::to_string(count);
    for (int32_t i = 0; i < count; ++i) visit(rows[i], prefix + (i == 0 ? "0." : "13."));
  }
  explicit whole_object(const product_caps_t &o) {
    using text = const std::string &;
    fields("product.", "id name hardware enterprise-name countrycode enterprise-oid protocol-name", o.id, o.name, o.hardware,
           o.enterprise_name, o.countrycode, o.enterprise_oid, o.protocol_name);
    list("radio.", o.radio_count, o.radios, [this](const caps_radio &r, text at) {
      fields(at, "master ieee-band allowed-modulations txpower-offset min-txpower antenna-gain frequency-offset ignore-crr "
             "cpe.fixed-channels band-edges.low band-edges.middle band-edges.high", r.master, r.ieee_band,
             r.allowed_modulations, r.txpower_offset, r.min_txpower, r.antenna_gain, r.frequency_offset, r.ignore_crr,
             r.cpe_fixed_channels, r.band_edge_low, r.band_edge_middle, r.band_edge_high);
      list(at + "frequency.", r.range_count, r.ranges, [this](const caps_freq_range &f, text below) {
        fields(below, "range max-eirp max-txpower max-width dfs-required range-limits", f.range, f.max_eirp, f.max_txpower,
               f.max_width, f.dfs_required, f.range_limits);
      });
    });
    shape += " ";
    list("limits.", o.limit_table_count, o.limit_tables, [this](const caps_limit_table &t, text at) {
      fields(at, "table-name", t.table_name);
      list(at + "table.", t.freq_count, t.freqs, [this](const caps_limit_freq &f, text below) {
        fields(below, "frequency dfs-required max-txpower max-eirp allowed-widths", f.frequency, f.dfs_required,
               f.max_txpower, f.max_eirp, f.allowed_widths);
      });
    });
    shape += " ";
    list("led.lan.", o.led_lan_count, o.led_lan, [this](const caps_led &l, text at) { fields(at, "devname name", l.devname, l.name); });
    list("led.rssi.", o.led_rssi_count, o.led_rssi, [this](const caps_led &l, text at) { fields(at, "devname names", l.devname, l.name); });
    fields("led.", "power.name blinkled.name", o.led_power_name, o.led_blinkled_name);
    fields("feature.", "pppoe-filter-control arpnat-behind-dhcp-snooper", o.pppoe_filter_control, o.arpnat_behind_dhcp_snooper);
  }
};

TEST(capabilities, every_key_is_read_once_in_order_and_lands_in_its_field) {
  on_device([all = whole_product()] {
    EXPECT_EQ(product_caps_get(), nullptr);
    EXPECT_EQ(asked(), "create\nread /etc/product\ndestroy\n");
    write_file("/etc/product", all.file);
    ASSERT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), all.calls);
    EXPECT_EQ(whole_object(product_caps).values, all.values);
    write_file("/etc/product", "");
    EXPECT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), "");
  });
}

TEST(capabilities, what_is_absent_is_all_zero) {
  on_device([] {
    write_file("/etc/product", "a.b=\nradio.0.frequency.0.range=1-2\nled.lan.0.devname=x\nled.rssi.0.names=x\nled.rssi.1.devname=");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_NE(asked().find("walk radio master\nfree null\nwalk limits table-name\nfree null\n"), std::string::npos);
    EXPECT_EQ(whole_object(product_caps).values, (std::map<std::string, std::string>{{"led.rssi.0.devname", ""}}));
    product_caps.loaded = product_caps.led_rssi_count = 0, product_caps.led_rssi = nullptr;
    const std::string rest(reinterpret_cast<char *>(&product_caps), sizeof product_caps);
    EXPECT_EQ(rest, std::string(sizeof product_caps, '\0'));
  });
}

TEST(capabilities, bounds_lie_outside_the_range) {
  const struct {
    const char *range;
    int32_t low, high;
  } rows[] = {
      {"5170-5250", 5160, 5260}, {" 5170 - 5250 ", 5160, 5260}, {"5170-5250MHz", 5160, 5260}, {"5170", 0, 0},
      {"5170:5250", 0, 0},       {"5170-x", 0, 0},              {"", 0, 0},                   {"-2147483648--5", INT_MAX - 9, 5},
  };
  on_device([&] {
    std::string file = "radio.0.master=ra0\n";
    int count = 0;
    for (const auto &row : rows) file += "radio.0.frequency." + std::to_string(count++) + ".range=" + row.range + "\r\n";
    write_file("/etc/product", file);
    ASSERT_NE(product_caps_get(), nullptr);
    ASSERT_EQ(product_caps.radios->range_count, count);
    const caps_freq_range *range = product_caps.radios->ranges;
    for (const auto &row : rows) {
      EXPECT_STREQ(range->range.value, row.range);
      EXPECT_EQ(range->low, row.low) << row.range;
      EXPECT_EQ(range++->high, row.high) << row.range;
    }
  });
}

TEST(capabilities, each_failing_allocation_costs_its_own_part_and_leaks_nothing) {
  // When the n-th growth fails.
  const std::string shapes[] = {"0 222 22", "202 222 22", "202 222 22", "0 222 22", "220 222 22", "220 222 22",
                                "222 0 22", "222 202 22", "222 202 22", "222 0 22", "222 220 22", "222 220 22",
                                "222 222 02", "222 222 02", "222 222 20", "222 222 20", "222 222 22"};
  const auto load = [file = whole_product().file](const char *call, int nth) {
    write_file("/etc/product", file);
    fail(call, nth, ENOMEM);
    const bool loaded = product_caps_get() != nullptr;
    const whole_object object(product_caps);
    EXPECT_EQ(live_blocks(), object.blocks) << call << nth;
    EXPECT_NE(product_caps_get(), nullptr);
    return loaded ? object.shape : "";
  };
  int nth = 0;
  for (const auto &shape : shapes) on_device([&, n = ++nth] { EXPECT_EQ(load("realloc", n), shape) << n; });
  on_device([&] { EXPECT_EQ(load("cfg_get_value", 1), shapes[16] + std::string(product_caps.id.present, '!')); });
  const int more_than_all = 120;
  for (nth = 1; nth <= more_than_all; ++nth) on_device([&] { load("allocation", nth); });
  on_device([&] {
    load("allocation", more_than_all);
    EXPECT_LT(calls_seen(), more_than_all);
  });
}

}  // namespace
