// The configuration store's stand-in, and what the library makes of the product's files.
#include <devfacts/product.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "platform/cfg_store.h"
#include "support/faults.h"
#include "support/process.h"

using namespace test;

static bool load(cfg_handle handle, const std::string &file) {
  write_file("/f", file);
  return cfg_read_file(handle, "/f") >= 0;
}

// What a walk finds: the text, also as a number and as a truth.
TEST(configuration, values_and_walks) {
  constexpr const char *walks[][2] = {{"number", "x"}, {"line", "x"},  {"r", "x"}, {"r.0.t", "x"},
                                      {"none", "x"},   {"r", "t.6.x"}, {"r", "t"}};
  const auto walk_all = [&walks, file = read_file("configuration")] {
    cfg_handle handle = cfg_create();
    EXPECT_TRUE(load(handle, file));
    for (const auto &[prefix, suffix] : walks) {
      std::printf("%s %s\n", prefix, suffix);
      cfg_iterator *first = cfg_create_index_iterator(handle, prefix, suffix);
      for (cfg_iterator *at = first; at != nullptr; at = at->next(at)) {
        const std::string key = std::string(prefix) + "." + std::to_string(at->index(at)) + "." + suffix;
        std::printf("%d [%s] %u %u\n", at->index(at), at->value(at), cfg_get_uint32_value(handle, 0, key.c_str()),
                    cfg_get_bool_value(handle, 0, key.c_str()));
      }
      cfg_free_iterator(first);
    }
    EXPECT_EQ(cfg_get_uint32_value(handle, 0, "x") + cfg_get_bool_value(handle, 0, "x"), 0U);
    EXPECT_EQ(cfg_key_exists(handle, ""), 0);
    cfg_destroy(handle);
    EXPECT_EQ(live_blocks(), 0);
  };
  on_device(walk_all, read_file("configuration.walks"));
}

TEST(configuration, files_add_up_and_one_that_is_refused_changes_nothing) {
  const std::string key(507, 'k');
  const std::string value(200000, 'v');
  on_device([&] {
    cfg_handle handle = cfg_create();
    EXPECT_TRUE(load(handle, "a.b=old\n"));
    const char *borrowed = cfg_get(handle, "a.%c", 'b');
    for (const std::string refused : {"a.b=1\nc.d\n", "a.b=1\n=x\n", "a.b =1\n", "a.b=1\nc d=e", "a.b=1\nc=?d"})
      EXPECT_FALSE(load(handle, std::regex_replace(refused, std::regex("\\?"), std::string(1, '\0')))) << refused;
    mkdir("/folder", 0700);
    mkfifo("/pipe", 0600);
    for (const char *path : {"/missing", "/folder", "/pipe"}) EXPECT_LT(cfg_read_file(handle, path), 0) << path;
    EXPECT_EQ(cfg_get(handle, "%s", "a.b"), borrowed);
    EXPECT_TRUE(load(handle, "a.b=new"));
    EXPECT_TRUE(load(handle, ""));
    EXPECT_TRUE(load(handle, key + ".1.x=" + value));
    EXPECT_STREQ(cfg_get(handle, "a.b"), "new");
    EXPECT_STREQ(borrowed, "old");
    EXPECT_EQ(cfg_get(handle, (key + ".1.x").c_str()), value);
    EXPECT_EQ(cfg_key_exists(handle, "%s.1.xy", key.c_str()), 0);
    cfg_destroy(handle);
    EXPECT_EQ(live_blocks(), 0);
  });
}

// Each key twice, of which the later counts; the file looks like one of the kernel's.
TEST(configuration, many_keys) {
  on_device([] {
    cfg_handle handle = cfg_create();
    std::string many;
    for (int i = 0; i < 20000; ++i)
      many += "r." + std::to_string(i * 7919 % 10000) + ".m=" + std::to_string(i - 10000) + "\n";
    read_at_most(4096);
    fail("allocation", 9, ENOMEM);
    EXPECT_FALSE(load(handle, many));
    EXPECT_TRUE(load(handle, many));
    for (int i = 0; i < 10000; ++i) EXPECT_EQ(std::stoi(cfg_get(handle, "r.%d.m", i * 7919 % 10000)), i);
    cfg_destroy(handle);
    EXPECT_EQ(live_blocks(), 0);
  });
}

TEST(configuration, files_and_keys_have_limits) {
  constexpr size_t limit = 1 << 20;
  const struct {
    std::string text;
    uintmax_t size;
    int result;
  } cases[] = {
      {"a=" + std::string(limit - 2, 'x'), limit, 0},
      {"a=" + std::string(limit - 1, 'x'), limit + 1, -1},
      {"a=b\n", UINT32_MAX - 1, -1},  // sparse; in 32 bits two bytes more are none
      {std::string(511, 'k') + "=v", 513, 0},
      {std::string(512, 'k') + "=v", 514, -1},
  };
  for (const auto &row : cases) {
    for (const size_t read_size : {SIZE_MAX, size_t{65536}}) {
      on_device([&] {
        write_file("/f", row.text);
        std::filesystem::resize_file("/f", row.size);
        read_at_most(read_size);
        cfg_handle handle = cfg_create();
        EXPECT_EQ(cfg_read_file(handle, "/f"), row.result) << row.size;
        cfg_destroy(handle);
      });
    }
  }
}

TEST(identity, lines_go_into_buffers_of_any_length_or_not_at_all) {
  const std::string longest(63, 'x');
  const std::string longer = longest + "yz";
  const struct {
    std::string file;
    int length;
    const char *serial, *version;  // null if there is none
  } cases[] = {
      {" A\tC \nD", 5, " A\tC", " A\tC"},
      {" A\tC \nD", 4, nullptr, " A"},
      {" A\tC \nD", 1, nullptr, ""},
      {" A\tC \nD", 0, nullptr, nullptr},
      {" A\tC \nD", -1, nullptr, nullptr},
      {longer, 66, longest.c_str(), longer.c_str()},
      {longest, 63, nullptr, longest.c_str() + 1},
  };
  on_device([&] {
    char buffer[66] = "kept";
    EXPECT_STREQ(read_serial_no(buffer, 17), "0000000000000000");
    EXPECT_EQ(read_serial_no(buffer, 16), nullptr);
    EXPECT_EQ(read_serial_no(nullptr, 9), nullptr);
    EXPECT_EQ(read_firmware_version(buffer, 17), nullptr);
    for (const auto &each : cases) {
      write_file("/etc/serial-no", each.file);
      write_file("/usr/lib/version", each.file);
      std::vector<char> bytes(static_cast<size_t>(std::max(each.length, 1)), '?');  // the sanitizer watches its end
      EXPECT_STREQ(read_serial_no(bytes.data(), static_cast<uint32_t>(std::max(each.length, 0))), each.serial);
      EXPECT_STREQ(read_firmware_version(bytes.data(), each.length), each.version) << each.file << each.length;
    }
  });
}

// In the first 4095 bytes of the version; what was found once stays.
TEST(identity, the_chip_is_the_first_of_the_table_that_the_version_names) {
  const std::pair<int, std::string> cases[] = {
      {CPU_ADM5120, "xscale x86 SL3512 rt3352 rt3050 rt3052 rt2880 ar5312 ar2317 ar2316 adm5120-1"},
      {CPU_RT2880, "v2.xscale x86 SL3512 rt3352 rt3050 rt3052 rt2880-1"},
      {CPU_NONE, "sl3512"},
      {CPU_RT3050, std::string(4089, ' ') + "rt3050"},
      {CPU_NONE, std::string(4090, ' ') + "rt3050"},
  };
  for (const auto &[chip, version] : cases) {
    on_device([chip = chip, version = version] {
      write_file("/usr/lib/version", version);
      for (int id = -1; id < 13; ++id) EXPECT_EQ(cpu_detect(id), id == chip) << version;
      write_file("/usr/lib/version", "ar2317");
      EXPECT_EQ(cpu_detect(CPU_AR2317), chip == CPU_NONE) << version;
    });
  }
}
