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
#include "support/store.h"

namespace {

using namespace test;

std::string text(const char *value) { return value == nullptr ? "(none)" : value; }

// A store that holds a file, and nothing of the library's once it is gone.
struct loaded_store {
  cfg_handle handle = cfg_create();
  explicit loaded_store(const std::string &file) { EXPECT_TRUE(load(file)); }
  ~loaded_store() {
    cfg_destroy(handle);
    EXPECT_EQ(live_blocks(), 0);
  }
  bool load(const std::string &file) { return write_file("/f", file), cfg_read_file(handle, "/f") >= 0; }
  std::string walk(const char *prefix, const char *suffix) {
    std::string seen;
    cfg_iterator *first = cfg_create_index_iterator(handle, prefix, suffix);
    for (auto *at = first; at != nullptr; at = at->next(at))
      seen += std::to_string(at->index(at)) + at->value(at) + " ";
    return cfg_free_iterator(first), seen;
  }
};

TEST(store, lines) {
  const struct {
    std::string file, value;  // of the key a.b; "old", which it held before, where the file is refused
  } rows[] = {{"", "old"},
              {"a.b=1", "1"},
              {"a.b=1\r\n\r\nc=d", "1"},
              {" \ta.b= 1 = # \r\r\n", " 1 = # \r"},
              {"a.b=\n", ""},
              {"a.b=1\na.b.c=2\na.b=3\na.c=4\na.b=2\n", "2"},
              {"# =\n \t#\n \t\n\v#x\na.b=1\n", "1"},
              {"a.b=1\nc.d\n", "old"},
              {"a.b=1\n=x\n", "old"},
              {"a.b =1\n", "old"},
              {"a.b=1\nc d=e", "old"},
              {std::string("a.b=1\nc=\0d", 10), "old"}};
  on_device([&] {
    for (const auto &row : rows) {
      loaded_store store("a.b=old\n");
      const char *borrowed = cfg_get(store.handle, "a.%c", 'b');
      EXPECT_EQ(store.load(row.file), row.value != "old" || row.file.empty()) << row.file;
      EXPECT_EQ(text(cfg_get(store.handle, "%s", "a.b")), row.value) << row.file;
      EXPECT_STREQ(borrowed, "old");
    }
    loaded_store store("");
    mkdir("/folder", 0700), mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe"}) EXPECT_LT(cfg_read_file(store.handle, path), 0) << path;
    EXPECT_EQ(cfg_key_exists(store.handle, ""), 0);
  });
}

TEST(store, numbers_and_truths) {
  const struct {
    const char *text;
    uint32_t number, truth;
  } rows[] = {{"20", 20, 0},
              {"-3", 0xfffffffd, 0},
              {" 7dBm", 7, 0},
              {"", 0, 0},
              {"99999999999999999999", UINT32_MAX, 0},
              {"-2147483649", 0x80000000, 0},
              {"1", 1, 1},
              {"TrUe", 0, 1},
              {"yes", 0, 1},
              {"ON", 0, 1},
              {"enabled", 0, 1},
              {"11", 11, 0},
              {"no", 0, 0}};
  on_device([&] {
    for (const auto &row : rows) {
      const loaded_store store(std::string("k=") + row.text);
      EXPECT_EQ(cfg_get_uint32_value(store.handle, 0, "k"), row.number) << row.text;
      EXPECT_EQ(cfg_get_bool_value(store.handle, 0, "k"), row.truth) << row.text;
      EXPECT_EQ(cfg_get_uint32_value(store.handle, 0, "x") + cfg_get_bool_value(store.handle, 0, "x"), 0U);
    }
  });
}

TEST(store, walks_see_the_indices_of_their_own_place_alone) {
  on_device([] {
    loaded_store store(
        "r.10.m=a\nr.9.m=b\nr.2147483647.m=c\nr.0.m=d\nr.9.m=e\nr.01.m=x\nr.00.m=x\nr.-1.m=x\nr.+1.m=x\n"
        "r.2147483648.m=x\nr.4294967297.m=x\nr.1x.m=x\nr..m=x\nr.1.mm=x\nrr.1.m=x\ns.r.1.m=x\nr.2=x\n"
        "r.3.n.m=f\nr.0.t.5.m=g\nr.0.t.4.m=h\nr.1.t.6.m=i\nr.1.t.7.m=j\n");
    EXPECT_EQ(store.walk("r", "m"), "0d 9e 10a 2147483647c ");
    EXPECT_EQ(store.walk("r.0.t", "m"), "4h 5g ");
    EXPECT_EQ(store.walk("r", "t.6.m"), "1i ");
    EXPECT_EQ(store.walk("r", "t"), "");
  });
}

TEST(store, is_large) {
  on_device([] {
    const std::string long_key(100000, 'k');
    std::string file = long_key + ".1.x=" + std::string(200000, 'v') + "\n";
    for (int i = 0; i < 10000; ++i) file += "r." + std::to_string(i * 7919 % 10000) + ".m=" + std::to_string(i) + "\n";
    loaded_store store(file + long_key.substr(0, 1023) + "=cut\n");
    for (int i = 0; i < 10000; ++i)
      EXPECT_EQ(text(cfg_get(store.handle, "r.%d.m", i * 7919 % 10000)), std::to_string(i));
    EXPECT_EQ(store.walk("r", "m").substr(0, 12), "00 17679 253");
    EXPECT_EQ(store.walk(long_key.c_str(), "x").size(), 200002U);
    EXPECT_EQ(text(cfg_get(store.handle, (long_key + ".1.x").c_str())).size(), 200000U);
    EXPECT_EQ(cfg_key_exists(store.handle, "%s.1.x", long_key.c_str()), 0);
  });
}

TEST(handles, a_missing_product_file_is_never_looked_for_again) {
  on_device([] {
    EXPECT_STREQ(product_name(), "product");
    write_file("/etc/product", "product.name=late\n");
    prod_spec_close();
    EXPECT_EQ(prod_spec_open(), -1);
    EXPECT_EQ(prod_spec_get_ctx(), nullptr);
    EXPECT_STREQ(product_manufacturer(), "manufacturer");
    EXPECT_EQ(asked(), "");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_STREQ(product_caps.name.value, "late");
  });
}

TEST(handles, open_once_and_try_again_after_failures) {
  const struct {
    std::string path;
    int (*open)();
    void (*close)();
    cfg_handle (*context)();
    const char *(*get)(const char *);
    const char *name;
  } families[] = {{"/tmp/system.cfg", sysconf_open, sysconf_close, sysconf_get_ctx, sysconf_get, "product"},
                  {"/etc/product", prod_spec_open, prod_spec_close, prod_spec_get_ctx, prod_spec_get, ""}};
  for (const auto &[path, open, close, context, get, name] : families) {
    on_device([=] {
      const std::string loading = "create\nread " + path + "\n", failing = loading + "destroy\n";
      write_file(path, "no entry\n");
      close();
      EXPECT_EQ(open(), -1);
      EXPECT_EQ(context(), nullptr);
      EXPECT_EQ(asked(), failing + failing);
      write_file(path, "a.b=1\nproduct.name=\n");
      fail("cfg_create", 1, 0);
      EXPECT_EQ(open(), -1);
      EXPECT_STREQ(get("a.b"), "1");
      EXPECT_EQ(asked(), "create\n" + loading + "get a.b\n");
      const cfg_handle opened = context();
      write_file(path, "a.b=2\n");
      EXPECT_EQ(open(), 0);
      EXPECT_EQ(context(), opened);
      EXPECT_EQ(text(get("none")) + text(get("%n%s")), "(none)(none)");
      EXPECT_EQ(asked(), "get none\n");
      EXPECT_STREQ(product_name(), name);
      close();
      close();
      EXPECT_STREQ(get("a.b"), "2");
      close();
      EXPECT_EQ(live_blocks(), 0);
    });
  }
  on_device([] {  // no file at all
    EXPECT_EQ(sysconf_open(), -1);
    EXPECT_EQ(sysconf_get("a"), nullptr);
    EXPECT_EQ(asked(), "create\nread /tmp/system.cfg\ndestroy\ncreate\nread /tmp/system.cfg\ndestroy\n");
  });
}

TEST(identity, lines_go_into_buffers_of_any_length_or_not_at_all) {
  const std::string digits(16, '0'), line63(63, 'x');
  const struct {
    std::string file;  // "-": none
    uint32_t length;
    std::string serial, version;
  } rows[] = {{"-", 17, digits, "(none)"},
              {"-", 16, "(none)", "(none)"},
              {"", 17, "(none)", "(none)"},
              {"ABC\n", 4, "ABC", "ABC"},
              {"ABC \r\nD", 3, "(none)", "AB"},
              {"ABC", 1, "(none)", ""},
              {" \t \n", 1, "", ""},
              {"\nX", 9, "", ""},
              {"A \n", 2, "A", "A"},
              {std::string("A\0BC", 4), 2, "A", "A"},
              {line63 + "yz\n", 64, line63, line63},
              {line63 + "yz", 63, "(none)", line63.substr(1)}};
  on_device([&] {
    for (const auto &row : rows) {
      if (row.file != "-") write_file("/etc/serial-no", row.file), write_file("/usr/lib/version", row.file);
      std::vector<char> room(row.length, '?');  // of this length to the byte, for the sanitizer
      EXPECT_EQ(text(read_serial_no(room.data(), row.length)), row.serial) << row.file;
      const std::string left = row.serial == "(none)" ? "" : row.serial;
      EXPECT_EQ(std::string(room.begin(), room.end()), left + std::string(row.length - left.size(), '\0')) << row.file;
      EXPECT_EQ(text(read_firmware_version(room.data(), static_cast<int>(row.length))), row.version) << row.file;
    }
    char byte = '?';
    EXPECT_EQ(text(read_serial_no(&byte, 0)) + text(read_serial_no(nullptr, 9)), "(none)(none)");
    EXPECT_EQ(text(read_firmware_version(&byte, 0)) + text(read_firmware_version(&byte, -1)) + byte, "(none)(none)?");
    for (const char *path : {"/etc/serial-no", "/usr/lib/version"}) remove(path), mkdir(path, 0700);
    EXPECT_EQ(text(read_serial_no(&byte, 1)) + text(read_firmware_version(&byte, 1)), "(none)");
  });
}

TEST(identity, the_chip_is_the_first_of_the_table_that_the_version_names) {
  const std::string far = std::string(4089, '.') + "rt3050";
  std::vector<std::pair<std::string, int32_t>> rows{
      {"rt3050 rt3052 adm5120", 1}, {"x86 rt3352", 11}, {"x86SL3512", 6}, {far, 10}, {"." + far, -1}, {"sl3512", -1}};
  for (const char *name : {"x.adm5120", "ar2316", "ar2317", "ar5312", "v2.rt2880.1", "SL3512", "x86", "xscale",
                           "rt3052", "rt3050-1", "rt3352"}) {
    rows.emplace_back(name, static_cast<int32_t>(rows.size()) - 5);
  }
  for (const auto &[version, chip] : rows) {
    on_device([version = version, chip = chip] {
      EXPECT_EQ(cpu_detect(-1), 1);
      write_file("/usr/lib/version", version);
      for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == chip) << version;
      write_file("/usr/lib/version", chip == 1 ? "rt3052" : "adm5120");
      EXPECT_EQ(cpu_detect(chip), chip != -1) << version;
    });
  }
}

// Goes through an object in the order in which its keys are read, and notes the calls that read it, a file that gives
// each key a value of its own, the values that it holds, the length of its lists ("220" for two, the second of them
// with an empty list in it), and the blocks that it keeps.
struct tour {
  std::string calls, file, shape;
  std::map<std::string, std::string> given, values;
  long blocks = 0;

  static std::string held(const caps_string &slot) { return text(slot.value); }
  static std::string held(const caps_u32 &slot) { return std::to_string(slot.value); }
  static std::string held(const caps_bool &slot) { return slot.value == 1U << 31 ? "on" : "off"; }
  template <class Slot>
  void field(const std::string &key, const Slot &slot) {
    const bool is_text = std::is_same_v<Slot, caps_string>, is_bool = std::is_same_v<Slot, caps_bool>;
    calls += "exists " + key + (is_text ? "\nstring " : is_bool ? "\nbool " : "\nu32 ") + key + "\n";
    given[key] = is_bool ? "on" : std::to_string(100 + given.size());
    file = key + "=" + given[key] + "\n" + file;  // the last is read first
    if (slot.present == 1) values[key] = held(slot);
    if (slot.present == 1) blocks += is_text;
  }
  template <class... Slots>
  void fields(const std::string &prefix, const char *names, const Slots &...slots) {
    std::istringstream words(names);
    std::string name;
    ((words >> name, field(prefix + name, slots)), ...);
  }
  template <class Row, class Visit>
  void list(const std::string &prefix, const char *suffix, int32_t count, const Row *rows, Visit visit) {
    EXPECT_EQ(rows != nullptr, count != 0) << prefix;
    calls += "walk " + prefix + " " + suffix + "\n";
    shape += std::to_string(count);
    for (int32_t i = 0; i < count; ++i) visit(rows[i], prefix + (i == 0 ? ".0." : ".13."));
    blocks += rows != nullptr;
    calls += "free\n";
  }
  explicit tour(const product_caps_t &o) {
    fields("product.", "id name hardware enterprise-name countrycode enterprise-oid protocol-name", o.id, o.name,
           o.hardware, o.enterprise_name, o.countrycode, o.enterprise_oid, o.protocol_name);
    list("radio", "master", o.radio_count, o.radios, [this](auto &r, auto at) {
      fields(at,
             "master ieee-band allowed-modulations txpower-offset min-txpower antenna-gain frequency-offset ignore-crr "
             "cpe.fixed-channels band-edges.low band-edges.middle band-edges.high",
             r.master, r.ieee_band, r.allowed_modulations, r.txpower_offset, r.min_txpower, r.antenna_gain,
             r.frequency_offset, r.ignore_crr, r.cpe_fixed_channels, r.band_edge_low, r.band_edge_middle,
             r.band_edge_high);
      list(at + "frequency", "range", r.range_count, r.ranges, [this](auto &f, auto below) {
        fields(below, "range-limits max-txpower max-eirp max-width dfs-required range", f.range_limits, f.max_txpower,
               f.max_eirp, f.max_width, f.dfs_required, f.range);
      });
    });
    list("limits", "table-name", o.limit_table_count, o.limit_tables, [this](auto &t, auto at) {
      fields(at, "table-name", t.table_name);
      list(at + "table", "frequency", t.freq_count, t.freqs, [this](auto &f, auto below) {
        fields(below, "dfs-required max-txpower max-eirp allowed-widths frequency", f.dfs_required, f.max_txpower,
               f.max_eirp, f.allowed_widths, f.frequency);
      });
    });
    fields("led.", "power.name blinkled.name", o.led_power_name, o.led_blinkled_name);
    list("led.lan", "name", o.led_lan_count, o.led_lan,
         [this](auto &l, auto at) { fields(at, "devname name", l.devname, l.name); });
    list("led.rssi", "devname", o.led_rssi_count, o.led_rssi,
         [this](auto &l, auto at) { fields(at, "devname names", l.devname, l.name); });
    fields("feature.", "pppoe-filter-control arpnat-behind-dhcp-snooper", o.pppoe_filter_control,
           o.arpnat_behind_dhcp_snooper);
  }
};

// Of an object with two rows in each list.
tour whole_product() {
  caps_freq_range ranges[2]{};
  caps_radio radios[2]{};
  caps_limit_freq freqs[2]{};
  caps_limit_table tables[2]{};
  caps_led leds[2]{};
  for (int i : {0, 1}) {
    radios[i].range_count = tables[i].freq_count = 2;
    radios[i].ranges = ranges, tables[i].freqs = freqs;
  }
  product_caps_t whole{};
  whole.radio_count = whole.limit_table_count = whole.led_lan_count = whole.led_rssi_count = 2;
  whole.radios = radios, whole.limit_tables = tables, whole.led_lan = whole.led_rssi = leds;
  return tour(whole);
}

TEST(capabilities, every_key_is_read_once_in_order_and_lands_in_its_field) {
  on_device([all = whole_product()] {
    EXPECT_EQ(product_caps_get(), nullptr);
    EXPECT_EQ(asked(), "create\nread /etc/product\ndestroy\n");
    write_file("/etc/product", all.file);
    ASSERT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), "create\nread /etc/product\n" + all.calls + "destroy\n");
    EXPECT_EQ(tour(product_caps).values, all.given);
    write_file("/etc/product", "");
    EXPECT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), "");
  });
}

TEST(capabilities, what_is_absent_is_all_zero) {
  on_device([] {
    write_file("/etc/product",
               "a.b=\nradio.0.frequency.0.range=1-2\nled.lan.0.devname=x\nled.rssi.0.names=x\nled.rssi.1.devname=");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_NE(asked().find("walk radio master\nfree null\nwalk limits table-name\nfree null\n"), std::string::npos);
    EXPECT_EQ(tour(product_caps).values, (std::map<std::string, std::string>{{"led.rssi.0.devname", ""}}));
    product_caps.loaded = product_caps.led_rssi_count = 0, product_caps.led_rssi = nullptr;
    const std::string rest(reinterpret_cast<char *>(&product_caps), sizeof product_caps);
    EXPECT_EQ(rest, std::string(sizeof product_caps, '\0'));
  });
}

TEST(capabilities, bounds_lie_outside_the_range) {
  on_device([] {
    const char *ranges[] = {"5170-5250", " 5170 - 5250 ", "5170-5250MHz", "5170", "5170:5250", "5170-x",
                            "",          "-2147483648--5"};
    std::string file = "radio.0.master=ra0\n", bounds;
    int index = 0;
    for (const char *range : ranges)
      file += "radio.0.frequency." + std::to_string(index++) + ".range=" + range + "\r\n";
    write_file("/etc/product", file);
    ASSERT_NE(product_caps_get(), nullptr);
    ASSERT_EQ(product_caps.radios->range_count, 8);
    for (const caps_freq_range *row = product_caps.radios->ranges; const char *range : ranges) {
      EXPECT_STREQ(row->range.value, range);
      bounds += std::to_string(row->low) + " " + std::to_string(row->high) + ", ";
      ++row;
    }
    EXPECT_EQ(bounds, "5160 5260, 5160 5260, 5160 5260, 0 0, 0 0, 0 0, 0 0, 2147483638 5, ");
  });
}

TEST(capabilities, each_failing_allocation_costs_its_own_part_and_leaks_nothing) {
  // When the n-th growth fails.
  const std::string shapes[] = {"022222",   "20222222", "20222222", "022222",   "22022222", "22022222",
                                "222022",   "22220222", "22220222", "222022",   "22222022", "22222022",
                                "22222202", "22222202", "22222220", "22222220", "22222222"};
  const auto load = [file = whole_product().file](const char *call, int nth) {
    write_file("/etc/product", file);
    fail(call, nth, ENOMEM);
    const bool loaded = product_caps_get() != nullptr;
    const tour object(product_caps);
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
