// The record table and its image, in stores that are damaged, torn, full or failing.
#include <arpa/inet.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <random>

#include "store/record_table.h"
#include "support/faults.h"
#include "support/process.h"

using namespace test;

using records = std::map<int, std::string>;

constexpr char store_file[] = "/var/cfg/.eeprom";
constexpr size_t image_offset = 4096;
constexpr size_t store_size = 65536;

static records table() {
  static records found;
  found.clear();
  eeprom_for_each([](const eeprom_record *record) {
    const auto *payload = reinterpret_cast<const char *>(record + 1);
    const size_t size = record->length - 4U;
    const size_t zeros = (size + 3) / 4 * 4 + 1 - size;
    EXPECT_EQ(std::string(payload + size, zeros), std::string(zeros, '\0'));
    EXPECT_TRUE(found.empty() || found.rbegin()->first < record->id);
    found[record->id] = {payload, size};
    return 1;
  });
  return found;
}

static int put(int id, const std::string &payload) {
  return eeprom_update(id, payload.data(), static_cast<uint32_t>(payload.size()));
}

static int load_anew() {
  eeprom_free();
  return eeprom_init();
}

// The format and the search, written once more in another way.
static std::string word(size_t value) { return bytes_of(htonl(static_cast<uint32_t>(value))); }

static uint32_t word_at(const std::string &text, size_t at) {
  uint32_t word = 0;
  text.copy(reinterpret_cast<char *>(&word), sizeof word, at);
  return ntohl(word);
}

static std::string image(const records &table) {
  std::string text;
  for (const auto &[id, payload] : table)
    text += padded(word((payload.size() + 4) << 16 | static_cast<unsigned>(id)) + payload);
  return "WXEE" + word(text.size() + 16) + word(0x10000) + word(0) + text;
}

static bool load(records &table, const std::string &text, size_t total) {
  if (total > text.size() || total < 16 || word_at(text, 12) != 0) return false;
  size_t at = 16;
  for (size_t length = 0; at + 4 <= total; at += (length + 3) / 4 * 4) {
    const auto id = static_cast<int>(word_at(text, at) & 0xffff);
    length = word_at(text, at) >> 16;
    if (length < 4 || at + length > total || (length > 4 && id == 65535)) return false;
    if (length > 4) table[id] = text.substr(at + 4, length - 4);
  }
  return at == total;
}

static int search(records &table, const std::string &store) {
  for (size_t at = 0; at + 16 <= store.size(); at += 16) {
    const size_t total = word_at(store, at + 4);
    const bool may_be_image = store.compare(at, 4, "WXEE") == 0 && total > 16 && total < store_size;
    if (may_be_image && load(table, store.substr(at, total), total)) return 0;
  }
  return -1;
}

static std::string sized(std::string store, size_t size = store_size, char with = '\0') {
  store.resize(size, with);
  return store;
}

static std::string with_image(const std::string &image, size_t at = image_offset) {
  return sized(std::string(at, '-') + image);
}

// The library finds in the store what there is to find.
static void expect_found(const std::string &store) {
  write_file(store_file, store);
  records expected;
  EXPECT_EQ(load_anew(), search(expected, store));
  EXPECT_EQ(table(), expected);
}

static records random_table(std::mt19937 &random, unsigned count, unsigned max_size) {
  records table;
  for (; count > 0; --count) {
    std::string payload(1 + random() % max_size, '\0');
    for (char &byte : payload) byte = static_cast<char>(random());
    table[static_cast<int>(random() % 40)] = payload;
  }
  return table;
}

TEST(records, the_table_grows_to_twice_the_id) {
  constexpr std::pair<int, unsigned> cases[] = {{0, 1},         {1, 2},         {34, 68},
                                                {32767, 65534}, {32768, 65535}, {65534, 65535}};
  for (const auto &[id, capacity] : cases) {
    for (const unsigned size : {65531U, 5U, 4U, 1U}) {
      EXPECT_EQ(put(id, std::string(size, 'x')), 0);
      EXPECT_EQ(newest_size(), (size + 7) / 4 * 4 + 1);
    }
    for (const int bad : {65535, 65536, -1, INT32_MIN}) EXPECT_EQ(put(bad, "b"), -1);
    EXPECT_EQ(put(id, std::string(65532, 'x')), -1);
    for (const int any : {id, 70000}) EXPECT_EQ(put(any, ""), 0);
    EXPECT_EQ(devfacts::eeprom_table.capacity, capacity);
    EXPECT_EQ(table(), (records{{id, "x"}}));
    for (const uint32_t each : {65535U, UINT32_MAX, static_cast<uint32_t>(id)}) eeprom_delete(each);
    EXPECT_EQ(table(), records());
    eeprom_free();
    EXPECT_EQ(live_blocks(), 0);
  }
}

TEST(records, elements_are_counted_by_id) {
  constexpr std::pair<int, uint32_t> counts[] = {{-1, 0}, {0, 0}, {1, 24}, {5, 6}, {7, 3}, {26, 2}, {35, 0}, {36, 0}};
  for (const auto &[id, expected] : counts) {
    const void *data = "";
    uint32_t count = 1;
    put(id, std::string(24, 'x'));
    EXPECT_EQ(eeprom_get(id, &data, &count), expected == 0 ? 0 : 1) << id;
    EXPECT_EQ(count, expected) << id;
  }
}

TEST(eeprom, thousands_of_operations_end_as_the_model_says) {
  on_device([] {
    std::mt19937 random(20);
    std::string store = with_image("");
    write_file(store_file, store);
    EXPECT_EQ(load_anew(), -1);
    records expected;
    for (int i = 0; i < 4000; ++i) {
      const int id = static_cast<int>(random() % (random() % 512 == 0 ? 65535 : 50));
      const unsigned operation = random() % 16;
      if (operation == 0) {
        expected.clear();
        EXPECT_EQ(load_anew(), search(expected, store));
      } else if (operation < 4) {
        eeprom_write();
        if (!expected.empty()) store.replace(image_offset, image(expected).size(), image(expected));
        ASSERT_TRUE(read_file(store_file) == store) << i;
      } else if (operation < 8) {
        eeprom_delete(static_cast<uint32_t>(id));
        expected.erase(id);
      } else {
        const std::string payload(1 + random() % (random() % 32 == 0 ? 900 : 60), static_cast<char>(random()));
        EXPECT_EQ(put(id, payload), 0);
        expected[id] = payload;
      }
      ASSERT_TRUE(i % 8 != 0 || table() == expected) << i;
    }
    eeprom_free();
    EXPECT_EQ(live_blocks(), 0);
  });
}

// An image file is read without a search.
TEST(eeprom, what_it_makes_of_images) {
  const auto header = [](uint32_t length) { return "WXEE" + word(length) + word(0x10000) + word(0); };
  const std::string ab("\0\6\0\5AB\0\0", 8);
  const std::string c("\0\5\0\1C\0\0\0", 8);
  const records only_ab{{5, "AB"}};
  const struct {
    const char *name;
    std::string image;
    int result;
    records found;
  } cases[] = {
      {"an image", header(24) + ab, 0, only_ab},
      {"bytes that do not count", header(24).replace(8, 4, "any ") + ab.substr(0, 6) + "xx", 0, only_ab},
      {"the later of an id wins", header(40) + std::string(ab).replace(4, 2, "XX") + c + ab, 0, {{1, "C"}, {5, "AB"}}},
      {"an empty record is passed over", header(36) + c + std::string("\0\4\0\1", 4) + ab, 0, {{1, "C"}, {5, "AB"}}},
      {"the highest id", header(24) + std::string(ab).replace(2, 2, "\xff\xfe"), 0, {{65534, "AB"}}},
      {"an id too high", header(40) + ab + std::string(ab).replace(2, 2, "\xff\xff") + c, -1, only_ab},
      {"another magic", header(24).replace(3, 1, "D") + ab, -1, {}},
      {"the last word is not zero", header(24).replace(15, 1, "\1") + ab, -1, {}},
      {"no records", header(16), -1, {}},
      {"the longest length", header(UINT32_MAX) + ab, -1, {}},
      {"a record too long", header(24) + std::string(ab).replace(1, 1, "\11"), -1, {}},
      {"padding beyond the end", header(22) + ab, -1, only_ab},
      {"two bytes after the last record", header(26) + ab + word(0), -1, only_ab},
  };
  for (const auto &each : cases) {
    on_device([&] {
      for (const size_t at : {0U, 16U, 8U, 4080U, 65504U, 4096U}) expect_found(with_image(each.image, at));
      EXPECT_EQ(load_anew(), each.result) << each.name;
      EXPECT_EQ(table(), each.found) << each.name;
      write_file("/image", each.image);
      eeprom_free();
      eeprom_read("/image");
      EXPECT_EQ(table(), each.found) << each.name;
      expect_found(with_image(sized(each.image, 48) + image({{5, "new"}, {9, "x"}})));
    });
  }
}

// Each subset of the sectors of 512 bytes is written: a writer that is killed leaves no other state.
TEST(eeprom, every_torn_state_of_a_write_loads_as_what_it_holds) {
  on_device([] {
    std::mt19937 random(512);
    const std::string older = image(random_table(random, 30, 250));
    const std::string newer = image(random_table(random, 20, 250));
    const std::string before = with_image(older);
    const std::string after = std::string(before).replace(image_offset, newer.size(), newer);
    for (size_t states = 1U << (newer.size() + 511) / 512; states-- > 0;) {
      std::string torn = before;
      for (size_t sector = 0; states >> sector != 0; ++sector) {
        const size_t at = image_offset + sector * 512;
        if ((states >> sector & 1) != 0) torn.replace(at, 512, after, at, 512);
      }
      expect_found(torn);
    }
  });
}

TEST(eeprom, a_write_of_what_is_stored_dirties_no_page) {
  on_device([] {
    write_file(store_file, "");
    load_anew();
    put(1, std::string(6000, 'a'));
    eeprom_write();
    const timespec long_ago[] = {{1, 0}, {1, 0}};
    utimensat(0, store_file, long_ago, 0);
    eeprom_write();
    struct stat status {};
    EXPECT_TRUE(stat(store_file, &status) == 0 && status.st_mtime == 1);
  });
}

TEST(eeprom, an_image_that_does_not_fit_is_not_written) {
  constexpr struct {
    unsigned store, image;  // their sizes; an image is stored behind the first page
    bool fits;
  } cases[] = {{4096, 24, false},     {4119, 24, false},    {4120, 24, true},     {65536, 61440, true},
               {65536, 61444, false}, {69632, 65532, true}, {69632, 65536, false}};
  for (const auto &each : cases) {
    on_device([&] {
      const std::string before(each.store, '-');
      write_file("/proc/mtd", "\nmtd0: 0 0 \"Factory\"");
      write_file("/dev/mtdblock0", before);
      load_anew();
      put(1, std::string(std::min(each.image, 40000U) - 20, 'a'));
      put(2, std::string(each.image < 40004 ? 0 : each.image - 40004, 'b'));
      eeprom_write();
      const std::string written = sized(before.substr(0, image_offset) + image(table()), each.store, '-');
      EXPECT_TRUE(read_file("/dev/mtdblock0") == (each.fits ? written : before)) << each.store << " " << each.image;
    });
  }
}

TEST(eeprom, partitions_are_found_by_name) {
  const std::string factory = "mtd3: 0 0 \"Factory\"\n";
  const std::string padding(2027, 'x');  // the first 2047 bytes of the list count
  const struct {
    int device;  // -1 if none is found
    std::string list;
  } cases[] = {
      {3, "dev: size\nmtd0: 00030000 00010000 \"Bootloader\"\nmtd3: 00010000 00010000 \"Factory\"\n"},
      {3, "\n" + factory + "mtd2: 0 0 \"Factory\""},
      {-1, "\nmtd0: 0 0 \"factory\"\nmtd0: 0 0 \"Factory2\"\n"},
      {-1, factory},
      {1, "\nmtd1: 0 0 \"Factory1\n"},
      {3, "\nmtd1: 0 0 \"\n" + factory},
      {8, "\nmtd4: 0 0 \"x\"\nmtd010: 0 0 \"Factory\"\n"},
      {-1, "\nmtd77: 0 0 \"Factory\"\n" + factory},
      {3, padding + "\nmtd3: 0 0 \"Factory\""},
      {-1, padding + "x\nmtd3: 0 0 \"Factory\""},
  };
  for (const auto &each : cases) {
    on_device([&] {
      for (const char *number : {"0", "1", "2", "3", "8"}) write_file(std::string("/dev/mtdblock") + number, number);
      EXPECT_EQ(mtd_block_find("Factory"), -1);
      write_file("/proc/mtd", each.list);
      const int fd = mtd_block_find("Factory");
      char number[2] = "";
      EXPECT_EQ(fd < 0 ? -1 : read(fd, number, 1), each.device < 0 ? -1 : 1) << each.list;
      if (fd < 0) return;
      EXPECT_EQ(number, std::to_string(each.device)) << each.list;
      EXPECT_EQ(fcntl(fd, F_GETFL) & O_ACCMODE, O_RDWR);
    });
  }
}

TEST(eeprom, no_message_goes_into_the_records) {
  for (const char *call : {"ftruncate", "fchmod"}) {
    on_device([&] {
      const std::string before(call[1] == 't' ? 100 : 65536, '-');
      write_file(store_file, before);
      chmod(store_file, 0600);
      fail(call, 1, EIO);
      const int kept = dup(STDERR_FILENO);
      close(STDERR_FILENO);
      eeprom_init();
      EXPECT_EQ(close(STDERR_FILENO), -1);
      dup2(kept, STDERR_FILENO);
      EXPECT_TRUE(read_file(store_file) == before) << call;
    });
  }
}

// A neighbour's memory lies in front of the guard page. The image goes onto the stack, which is smaller.
TEST(eeprom, a_small_stack_ends_at_its_guard_page) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer has stacks of its own";
#endif
  constexpr size_t guard_end = 262144;
  constexpr size_t stack_size = 49152;
  auto *memory = static_cast<char *>(
      mmap(nullptr, guard_end + stack_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  mprotect(memory + guard_end - 4096, 4096, PROT_NONE);
  const ending end = run_on_device([=] {
    write_file(store_file, std::string("WXEE\0\0\xff\xff\0\1\0\0\0\0\0\0\xff\xef\0\5", 20) + std::string(65516, 'x'));
    ucontext_t small;
    getcontext(&small);
    small.uc_stack = {memory + guard_end, 0, stack_size};
    const auto run = [] {
      eeprom_init();
      leave();
    };
    makecontext(&small, run, 0);
    setcontext(&small);
  });
  EXPECT_EQ(end.status, 128 + SIGSEGV);
  EXPECT_EQ(std::count(memory, memory + guard_end - 4096, '\0'), guard_end - 4096);
}
