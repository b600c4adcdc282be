// The configuration store's stand-in, and what the library makes of the product's files.
#include <devfacts/product.h>
#include <sys/stat.h>

#include <regex>
#include <sstream>

#include "product/cfg_store.h"
#include "support/test.h"
#include "tools/command.h"

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
  void print_walk(const char *prefix, const char *suffix) {
    std::printf("%.9s %s\n", prefix, suffix);
    cfg_iterator *first = cfg_create_index_iterator(handle, prefix, suffix);
    for (auto *at = first; at != nullptr; at = at->next(at)) {
      const std::string key = std::string(prefix) + "." + std::to_string(at->index(at)) + "." + suffix;
      std::printf("%d [%.99s] %u %u\n", at->index(at), at->value(at), cfg_get_uint32_value(handle, 0, key.c_str()),
                  cfg_get_bool_value(handle, 0, key.c_str()));
    }
    cfg_free_iterator(first);
  }
};

TEST(store, values_and_walks) {
  const auto load = [file = data("store.cfg")] {
    loaded_store store(file);
    for (const char *prefix : {"number", "line", "r", "r.0.t", "none"}) store.print_walk(prefix, "x");
    store.print_walk("r", "t.6.x"), store.print_walk("r", "t");
    EXPECT_EQ(cfg_get_uint32_value(store.handle, 0, "x") + cfg_get_bool_value(store.handle, 0, "x"), 0U);
    EXPECT_EQ(cfg_key_exists(store.handle, ""), 0);
  };
  on_device(load, data("store.walks") + "||0");
}

TEST(store, a_file_that_is_refused_changes_nothing) {
  on_device([refused = rows("refused")] {
    loaded_store store("a.b=old\n");
    const char *borrowed = cfg_get(store.handle, "a.%c", 'b');
    for (const auto &row : refused) EXPECT_FALSE(store.load(row[0]));
    mkdir("/folder", 0700), mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe"}) EXPECT_LT(cfg_read_file(store.handle, path), 0) << path;
    EXPECT_EQ(cfg_get(store.handle, "%s", "a.b"), borrowed);
    EXPECT_TRUE(store.load("a.b=new") && store.load(""));
    EXPECT_EQ(text(cfg_get(store.handle, "a.b")) + borrowed, "newold");
  });
}

TEST(store, is_large) {
  on_device([] {
    const std::string long_key(100000, 'k');
    std::string file = long_key + ".1.x=" + std::string(200000, 'v') + "\n";
    for (int i = -10000; i < 10000; ++i) {  // each key twice, of which the later counts
      file += "r." + std::to_string((i + 10000) * 7919 % 10000) + ".m=" + std::to_string(i) + "\n";
    }
    loaded_store store(file + long_key.substr(0, 1023) + "=cut\n");
    for (int i = 0; i < 10000; ++i) EXPECT_EQ(std::stoi(cfg_get(store.handle, "r.%d.m", i * 7919 % 10000)), i);
    EXPECT_EQ(text(cfg_get(store.handle, (long_key + ".1.x").c_str())).size(), 200000U);
    EXPECT_EQ(cfg_key_exists(store.handle, "%s.1.x", long_key.c_str()), 0);
  });
}

TEST(handles, a_missing_product_file_is_never_looked_for_again) {
  on_device([] {
    EXPECT_STREQ(product_name(), "product");
    write_file("/etc/product", "product.name=late\n");
    prod_spec_close();
    EXPECT_TRUE(prod_spec_open() == -1 && prod_spec_get_ctx() == nullptr);
    EXPECT_STREQ(product_manufacturer(), "manufacturer");
    EXPECT_EQ(asked(), "");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_STREQ(product_caps.name.value, "late");
  });
}

// What a file that is written over and over gives, with the store's part in it.
void print_answers(const std::string &path, auto open, auto close, auto context, auto get) {
  const auto ask = [&](const char *file, const char *key) {
    write_file(path, file);
    const int opened = open();
    const std::string value = text(get(key)), there = context() == nullptr ? "closed" : "open";
    std::printf("%s%d %s %s\n", asked().c_str(), opened, value.c_str(), there.c_str());
  };
  close();
  ask("no entry\n", "a.b");
  fail("cfg_create", 1, 0);
  for (const char *key : {"a.b", "none", "%n%s"}) ask("a.b=1\n", key);
  for (int i = 0; i < 2; ++i) close();
  ask("a.b=2\nproduct.name=\n", "a.b");
}

TEST(handles, open_once_and_try_again_after_failures) {
  const auto ask_both = [] {
    print_answers("/etc/product", prod_spec_open, prod_spec_close, prod_spec_get_ctx, prod_spec_get);
    EXPECT_STREQ(product_name(), "");
    EXPECT_EQ(sysconf_open(), -1);  // no file at all
    print_answers("/tmp/system.cfg", sysconf_open, sysconf_close, sysconf_get_ctx, sysconf_get);
    prod_spec_close(), sysconf_close();
    EXPECT_EQ(live_blocks(), 0);
  };
  on_device(ask_both, data("answers") + "||0");
}

TEST(identity, lines_go_into_buffers_of_any_length_or_not_at_all) {
  const auto print_lines = [](const std::string &file) {
    for (const int length : {1, 2, 3, 4, 16, 17, 63, 64, 65}) {
      std::vector<char> room(length, '?');  // of this length to the byte, for the sanitizer
      const std::string serial = text(read_serial_no(room.data(), static_cast<uint32_t>(length)));
      std::printf("%s%d: %s %s ", file.c_str(), length, serial.c_str(), shown(room.data(), room.size()).c_str());
      std::printf("%s\n", text(read_firmware_version(room.data(), length)).c_str());
    }
  };
  const auto body = [&, table = rows("lines.files")] {
    print_lines("");
    for (const auto &row : table) {
      write_file("/etc/serial-no", row[0]), write_file("/usr/lib/version", row[0]);
      print_lines(row[0]);
    }
    char byte = '?';
    EXPECT_EQ(text(read_serial_no(&byte, 0)) + text(read_serial_no(nullptr, 9)), "(none)(none)");
    EXPECT_EQ(text(read_firmware_version(&byte, 0)) + text(read_firmware_version(&byte, -1)) + byte, "(none)(none)?");
    for (const char *path : {"/etc/serial-no", "/usr/lib/version"}) remove(path), mkdir(path, 0700);
    EXPECT_EQ(text(read_serial_no(&byte, 1)) + text(read_firmware_version(&byte, 1)), "(none)");
  };
  on_device(body, data("lines") + "||0");
}

TEST(identity, the_chip_is_the_first_of_the_table_that_the_version_names) {
  // The name in the last of the characters that count, and one too far behind.
  const std::string blanks(4088, ' ');
  std::istringstream rows(data("chips") + "10 " + blanks + "rt3050\n-1  " + blanks + "rt3050\n");
  int chip = 0;
  for (std::string version; rows >> chip && std::getline(rows, version);) {
    on_device([=] {
      EXPECT_EQ(cpu_detect(-1), 1);
      write_file("/usr/lib/version", version);
      for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == chip) << version;
      write_file("/usr/lib/version", chip == 1 ? "rt3052" : "adm5120");
      EXPECT_EQ(cpu_detect(chip), chip != -1) << version;
    });
  }
}

void print_document() {
  char *no_key = nullptr;
  EXPECT_EQ(devfacts::tool::product(&no_key), devfacts::tool::done);
}

TEST(capabilities, every_key_is_read_once_in_order_and_lands_in_its_field) {
  const auto load = [file = data("product"), calls = data("product.calls")] {
    EXPECT_EQ(product_caps_get(), nullptr);
    EXPECT_EQ(asked(), "create\nread /etc/product\ndestroy\n");
    write_file("/etc/product", file);
    ASSERT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), "create\nread /etc/product\n" + calls + "destroy\n");
    EXPECT_EQ(prod_spec_open(), 0);
    write_file("/etc/product", "");
    write_file("/etc/serial-no", "12<34\n"), write_file("/usr/lib/version", "v1.rt3052\n");
    print_document();
  };
  on_device(load, data("product.xml") + "||0");
}

TEST(capabilities, what_is_absent_is_all_zero) {
  on_device([] {
    write_file("/etc/product",
               "a.b=\nradio.0.frequency.0.range=1-2\nled.lan.0.devname=x\nled.rssi.0.names=x\nled.rssi.1.devname=");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_NE(asked().find("walk radio master\nfree null\nwalk limits table-name\nfree null\n"), std::string::npos);
    ASSERT_EQ(product_caps.led_rssi_count, 1);
    const auto &[devname, name] = *product_caps.led_rssi;
    EXPECT_EQ(text(devname.value) + text(name.value) + std::to_string(devname.present - name.present), "(none)1");
    product_caps_t rest = product_caps;
    rest.loaded = rest.led_rssi_count = 0, rest.led_rssi = nullptr;
    EXPECT_EQ(shown(&rest, sizeof rest), std::string(sizeof rest, '.'));
  });
}
