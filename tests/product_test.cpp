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
      EXPECT_EQ(cfg_get(handle, key.c_str()), at->value(at));
      std::printf("%d [%.99s] %u %u\n", at->index(at), at->value(at), cfg_get_uint32_value(handle, 0, key.c_str()),
                  cfg_get_bool_value(handle, 0, key.c_str()));
    }
    cfg_free_iterator(first);
  }
};

TEST(store, values_and_walks) {
  const auto load = [file = shell("cat store.cfg")] {
    loaded_store store(file + "line.0.x=1\r\n\r\n \tline.1.x= 1 = # \r\r\nline.2.x=end");
    for (const char *prefix : {"number", "line", "r", "r.0.t", "none"}) store.print_walk(prefix, "x");
    store.print_walk("r", "t.6.x"), store.print_walk("r", "t");
    EXPECT_EQ(cfg_get_uint32_value(store.handle, 0, "x") + cfg_get_bool_value(store.handle, 0, "x"), 0U);
    EXPECT_EQ(cfg_key_exists(store.handle, ""), 0);
  };
  on_device(load, shell("cat store.walks") + "||0");
}

TEST(store, a_file_that_is_refused_changes_nothing) {
  on_device([] {
    loaded_store store("a.b=old\n");
    const char *borrowed = cfg_get(store.handle, "a.%c", 'b');
    for (const char *file : {"a.b=1\nc.d\n", "a.b=1\n=x\n", "a.b =1\n", "a.b=1\nc d=e"}) EXPECT_FALSE(store.load(file));
    EXPECT_FALSE(store.load(std::string("a.b=1\nc=\0d", 10)));
    mkdir("/folder", 0700), mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe"}) EXPECT_LT(cfg_read_file(store.handle, path), 0) << path;
    EXPECT_EQ(cfg_get(store.handle, "%s", "a.b"), borrowed);
    EXPECT_TRUE(store.load(""));
    EXPECT_TRUE(store.load("a.b=new"));
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
    for (int i = 0; i < 10000; ++i)
      EXPECT_EQ(text(cfg_get(store.handle, "r.%d.m", i * 7919 % 10000)), std::to_string(i));
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

// What the two configuration files have in common.
struct family {
  std::string path;
  int (*open)();
  void (*close)();
  cfg_handle (*context)();
  const char *(*get)(const char *);
};

void expect_retries(const family &file) {
  const std::string loading = "create\nread " + file.path + "\n";
  write_file(file.path, "no entry\n");
  file.close();
  EXPECT_EQ(file.open(), -1);
  EXPECT_EQ(file.context(), nullptr);
  EXPECT_EQ(file.get("a.b"), nullptr);
  write_file(file.path, "a.b=1\n");
  fail("cfg_create", 1, 0);
  EXPECT_EQ(file.open(), -1);
  EXPECT_STREQ(file.get("a.b"), "1");
  const cfg_handle opened = file.context();
  write_file(file.path, "a.b=2\n");
  EXPECT_EQ(file.open(), 0);
  EXPECT_EQ(file.context(), opened);
  EXPECT_EQ(text(file.get("none")) + text(file.get("%n%s")), "(none)(none)");
  file.close();
  file.close();
  EXPECT_STREQ(file.get("a.b"), "2");
  file.close();
  EXPECT_EQ(live_blocks(), 0);
  const std::string failing = loading + "destroy\n", once_open = "get none\ndestroy\n" + loading + "get a.b\ndestroy\n";
  EXPECT_EQ(asked(), failing + failing + failing + "create\n" + loading + "get a.b\n" + once_open);
}

TEST(handles, open_once_and_try_again_after_failures) {
  on_device([] {
    expect_retries({"/etc/product", prod_spec_open, prod_spec_close, prod_spec_get_ctx, prod_spec_get});
  });
  on_device([] {
    EXPECT_EQ(sysconf_open(), -1);  // no file at all
    EXPECT_EQ(asked(), "create\nread /tmp/system.cfg\ndestroy\n");
    expect_retries({"/tmp/system.cfg", sysconf_open, sysconf_close, sysconf_get_ctx, sysconf_get});
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
    for (const auto &[file, length, serial, version] : rows) {
      if (file != "-") write_file("/etc/serial-no", file), write_file("/usr/lib/version", file);
      std::vector<char> room(length, '?');  // of this length to the byte, for the sanitizer
      EXPECT_EQ(text(read_serial_no(room.data(), length)), serial) << file;
      const std::string left = serial == "(none)" ? "" : serial;
      EXPECT_EQ(std::string(room.begin(), room.end()), left + std::string(length - left.size(), '\0')) << file;
      EXPECT_EQ(text(read_firmware_version(room.data(), static_cast<int>(length))), version) << file;
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
  const std::pair<std::string, int32_t> rows[] = {{"rt3050 rt3052 adm5120", 1},
                                                  {"x86 rt3352", 11},
                                                  {"x86SL3512", 6},
                                                  {far, 10},
                                                  {"." + far, -1},
                                                  {"sl3512", -1},
                                                  {"x.adm5120", 1},
                                                  {"ar2316", 2},
                                                  {"ar2317", 3},
                                                  {"ar5312", 4},
                                                  {"v2.rt2880.1", 5},
                                                  {"SL3512", 6},
                                                  {"x86", 7},
                                                  {"xscale", 8},
                                                  {"rt3052", 9},
                                                  {"rt3050-1", 10},
                                                  {"rt3352", 11}};
  for (const auto &row : rows) {
    on_device([&version = row.first, chip = row.second] {
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
  const auto load = [file = shell("cat product"), calls = shell("cat product.calls")] {
    EXPECT_EQ(product_caps_get(), nullptr);
    EXPECT_EQ(asked(), "create\nread /etc/product\ndestroy\n");
    write_file("/etc/product", file);
    ASSERT_EQ(product_caps_get(), &product_caps);
    EXPECT_EQ(asked(), "create\nread /etc/product\n" + calls + "destroy\n");
    EXPECT_EQ(prod_spec_open(), 0);
    write_file("/etc/product", "");
    write_file("/etc/serial-no", "12<34\n");
    write_file("/usr/lib/version", "v1.rt3052\n");
    print_document();
  };
  on_device(load, shell("cat product.xml") + "||0");
}

TEST(capabilities, what_is_absent_is_all_zero) {
  on_device([] {
    write_file("/etc/product",
               "a.b=\nradio.0.frequency.0.range=1-2\nled.lan.0.devname=x\nled.rssi.0.names=x\nled.rssi.1.devname=");
    ASSERT_NE(product_caps_get(), nullptr);
    EXPECT_NE(asked().find("walk radio master\nfree null\nwalk limits table-name\nfree null\n"), std::string::npos);
    ASSERT_EQ(product_caps.led_rssi_count, 1);
    const caps_led &led = *product_caps.led_rssi;
    EXPECT_EQ(text(led.devname.value) + text(led.name.value), "(none)");
    EXPECT_EQ(led.devname.present - led.name.present, 1);
    product_caps.loaded = product_caps.led_rssi_count = 0, product_caps.led_rssi = nullptr;
    const std::string rest(reinterpret_cast<char *>(&product_caps), sizeof product_caps);
    EXPECT_EQ(rest, std::string(sizeof product_caps, '\0'));
  });
}

long count_of(const std::string &text, const char *pattern) {
  const std::regex wanted(pattern);
  return std::distance(std::sregex_iterator(text.begin(), text.end(), wanted), {});
}

// The document of an object whose n-th call failed while it was read, and behind it the blocks that the object keeps:
// one for each list, and one for each text, all of which end in "&" in the file.
std::string document_after_failure(const char *call, int nth) {
  const std::string document = run_on_device([=, file = shell("cat product")] {
    write_file("/etc/product", file);
    fail(call, nth, ENOMEM);
    EXPECT_TRUE(product_caps_get() != nullptr || live_blocks() == 0);
    const bool failed = calls_seen() >= nth;
    fail("", 0, 0);
    print_document();
    EXPECT_EQ(product_caps.id.present, product_caps.id.value != nullptr);
    prod_spec_close();
    std::printf("%ld%s", live_blocks(), failed ? "" : ", no failure");
  });
  const std::string object = document.substr(document.find("<capabilities>"));
  const long following_rows = count_of(object, "</([a-z_]+)>\n <\\1>\n");
  const long blocks = count_of(object, "&amp;</") + count_of(object, "\n <[a-z_]+>") - following_rows;
  EXPECT_EQ(std::stol(object.substr(object.find("</product>\n") + 11)), blocks) << call << nth;
  EXPECT_EQ(object.substr(object.find('|')), "||0");
  return document;
}

TEST(capabilities, a_growth_that_fails_costs_its_list) {
  std::istringstream growths(shell("cat growths"));  // the rows left, each by the last letter of its element
  int nth = 0;
  for (std::string rows; growths >> rows;) {
    const std::string document = document_after_failure("realloc", ++nth);
    EXPECT_EQ(std::regex_replace(document, std::regex("\n <capabilities>|\n <[a-z_]*([a-z])>|[^]"), "$1"), rows) << nth;
  }
  EXPECT_NE(document_after_failure("realloc", nth).find("no failure"), std::string::npos);
}

TEST(capabilities, any_other_failing_call_leaks_nothing) {
  EXPECT_NE(document_after_failure("cfg_get_value", 1).find("  <id>N/A</id>\n"), std::string::npos);
  for (int nth = 1; document_after_failure("allocation", nth).find("no failure") == std::string::npos;) ++nth;
}
