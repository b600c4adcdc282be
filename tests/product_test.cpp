// The configuration store's stand-in, and what the library makes of the product's files.
#include <devfacts/product.h>
#include <sys/stat.h>

#include "platform/cfg_store.h"
#include "support/test.h"

using namespace test;

std::string text(const char *value) { return value == nullptr ? "(none)" : value; }

bool load(cfg_handle store, const std::string &file) { return write_file("/f", file), cfg_read_file(store, "/f") >= 0; }

// Each walk's prefix and suffix, and what is found there: the text, also as a number and as a truth.
TEST(store, values_and_walks) {
  const auto walk_all = [file = data("store.cfg"), walks = rows("walks")] {
    cfg_handle store = cfg_create();
    EXPECT_TRUE(load(store, file));
    for (const auto &row : walks) {
      std::printf("%s %s\n", row[0].c_str(), row[1].c_str());
      cfg_iterator *first = cfg_create_index_iterator(store, row[0].c_str(), row[1].c_str());
      for (auto *at = first; at != nullptr; at = at->next(at)) {
        const std::string key = row[0] + "." + std::to_string(at->index(at)) + "." + row[1];
        std::printf("%d [%s] %u %u\n", at->index(at), at->value(at), cfg_get_uint32_value(store, 0, key.c_str()),
                    cfg_get_bool_value(store, 0, key.c_str()));
      }
      cfg_free_iterator(first);
    }
    EXPECT_EQ(cfg_get_uint32_value(store, 0, "x") + cfg_get_bool_value(store, 0, "x") + cfg_key_exists(store, ""), 0U);
    cfg_destroy(store);
    EXPECT_EQ(live_blocks(), 0);
  };
  on_device(walk_all, data("store.walks") + "||0");
}

TEST(store, files_add_up_and_one_that_is_refused_changes_nothing) {
  on_device([refused = rows("refused"), key = std::string(507, 'k'), value = std::string(200000, 'v')] {
    cfg_handle store = cfg_create();
    EXPECT_TRUE(load(store, "a.b=old\n"));
    const char *borrowed = cfg_get(store, "a.%c", 'b');
    for (const auto &row : refused) EXPECT_FALSE(load(store, row[0])) << row[0];
    mkdir("/folder", 0700), mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe"}) EXPECT_LT(cfg_read_file(store, path), 0) << path;
    EXPECT_EQ(cfg_get(store, "%s", "a.b"), borrowed);
    EXPECT_TRUE(load(store, "a.b=new") && load(store, ""));
    EXPECT_TRUE(load(store, key + ".1.x=" + value));
    EXPECT_EQ(text(cfg_get(store, "a.b")) + borrowed + cfg_get(store, (key + ".1.x").c_str()), "newold" + value);
    EXPECT_EQ(cfg_key_exists(store, "%s.1.xy", key.c_str()), 0);
    read_at_most(4096);
    std::string many;
    for (int i = -10000; i < 10000; ++i)  // each key twice, of which the later counts
      many += "r." + std::to_string((i + 10000) * 7919 % 10000) + ".m=" + std::to_string(i) + "\n";
    for (const int nth : {2, 9}) {
      fail("allocation", nth, ENOMEM);
      EXPECT_FALSE(load(store, many)) << nth;
    }
    EXPECT_TRUE(load(store, many));
    for (int i = 0; i < 10000; ++i) EXPECT_EQ(std::stoi(cfg_get(store, "r.%d.m", i * 7919 % 10000)), i);
    cfg_destroy(store);
    EXPECT_EQ(live_blocks(), 0);
  });
}

// Each file, with none in front, is read into buffers of these lengths to the byte, for the sanitizer.
TEST(identity, lines_go_into_buffers_of_any_length_or_not_at_all) {
  const auto read_all = [files = rows("lines.files")] {
    for (const auto &row : files) {
      if (row[0] != "none") write_file("/etc/serial-no", row[0]), write_file("/usr/lib/version", row[0]);
      for (const int length : {-1, 0, 1, 2, 3, 4, 16, 17, 63, 64, 65}) {
        std::vector<char> room(std::max(length, 1), '?');
        const std::string serial = text(read_serial_no(room.data(), static_cast<uint32_t>(std::max(length, 0))));
        std::printf("%s%d: %s %s ", row[0].c_str(), length, serial.c_str(), shown(room.data(), room.size()).c_str());
        std::printf("%s\n", text(read_firmware_version(room.data(), length)).c_str());
      }
    }
    EXPECT_EQ(read_serial_no(nullptr, 9), nullptr);
  };
  on_device(read_all, data("lines") + "||0");
}

// Each row: the chip, and the version; the last two have the name in the last bytes that count, and one byte behind.
TEST(identity, the_chip_is_the_first_of_the_table_that_the_version_names) {
  for (const auto &row : rows("chips")) {
    on_device([&, chip = std::stoi(row[0])] {
      write_file("/usr/lib/version", row[1]);
      for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == chip) << row[1];
      write_file("/usr/lib/version", chip == 1 ? "rt3052" : "adm5120");
      EXPECT_EQ(cpu_detect(chip), chip != -1) << row[1];
    });
  }
}

TEST(capabilities, what_is_absent_is_all_zero) {
  const auto load = [file = data("product.bare")] {
    EXPECT_STREQ(product_name(), "product");  // and the file is not looked for again in the name of the product
    write_file("/etc/product", file);
    EXPECT_EQ(product_caps_get(), &product_caps);
    const auto &[devname, name] = *product_caps.led_rssi;
    EXPECT_EQ(text(devname.value) + text(name.value) + listed(devname.present, name.present), "(none)1 0");
    product_caps_t rest = product_caps;
    rest.loaded = rest.led_rssi_count = 0, rest.led_rssi = nullptr;
    EXPECT_EQ(shown(&rest, sizeof rest), std::string(sizeof rest, '.'));
    std::printf("%s", asked().c_str());
  };
  on_device(load, data("product.absent") + "||0");
}
