// The record table and its image, in stores that are damaged, torn, full or failing.
#include <arpa/inet.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <map>
#include <random>
#include <sstream>

#include "store/record_table.h"
#include "support/test.h"

using namespace test;

using records = std::map<int, std::string>;

constexpr char path[] = "/var/cfg/.eeprom";
constexpr size_t place = 4096, whole = 65536;

records table() {
  static records found;
  found.clear();
  eeprom_for_each([](const eeprom_record *record) {
    const auto *payload = reinterpret_cast<const char *>(record + 1);
    const size_t size = record->length - 4U, zeros = (size + 3) / 4 * 4 + 1 - size;
    EXPECT_EQ(std::string(payload + size, zeros), std::string(zeros, '\0'));
    EXPECT_TRUE(found.empty() || found.rbegin()->first < record->id);
    return found[record->id] = {payload, size}, 1;
  });
  return found;
}

int put(int id, const std::string &payload) {
  return eeprom_update(id, payload.data(), static_cast<uint32_t>(payload.size()));
}

int init() { return eeprom_free(), eeprom_init(); }

// The format and the search told once more, in other words.
std::string word(size_t value) { return bytes_of(htonl(static_cast<uint32_t>(value))); }

uint32_t word_at(const std::string &text, size_t at) {
  uint32_t word = 0;
  text.copy(reinterpret_cast<char *>(&word), sizeof word, at);
  return ntohl(word);
}

std::string image(const records &table) {
  std::string text;
  for (const auto &[id, payload] : table) text += padded(word((payload.size() + 4) << 16 | id) + payload);
  return "WXEE" + word(text.size() + 16) + word(0x10000) + word(0) + text;
}

bool load(records &table, const std::string &text, size_t total) {
  if (total > text.size() || total < 16 || word_at(text, 12) != 0) return false;
  size_t at = 16;
  for (uint32_t length = 0; at + 4 <= total; at += (length + 3) / 4 * 4) {
    const int id = word_at(text, at) & 0xffff;
    length = word_at(text, at) >> 16;
    if (length < 4 || at + length > total || (length > 4 && id == 65535)) return false;
    if (length > 4) table[id] = text.substr(at + 4, length - 4);
  }
  return at == total;
}

int search(records &table, const std::string &store) {
  for (size_t at = 0; at + 16 <= store.size(); at += 16) {
    const size_t total = word_at(store, at + 4);
    if (store.compare(at, 4, "WXEE") == 0 && total > 16 && total < whole && load(table, store.substr(at, total), total))
      return 0;
  }
  return -1;
}

std::string sized(std::string store, size_t size = whole, char with = '\0') { return store.resize(size, with), store; }

std::string with_image(const std::string &image, size_t at = place) { return sized(std::string(at, '-') + image); }

// The library finds in the store what there is to find in front of the place where it ends or breaks.
void expect_found(const std::string &store, size_t end = whole, bool cuts = false) {
  write_file(path, store);
  records wanted;
  const int result = search(wanted, sized(store, end));
  break_store(static_cast<off_t>(end), cuts);
  EXPECT_EQ(init(), result);
  EXPECT_EQ(table(), wanted);
  break_store(-1, false);
}

records random_table(std::mt19937 &random, unsigned count, unsigned most) {
  records table;
  while (count-- > 0) {
    std::string &payload = table[static_cast<int>(random() % 40)];
    for (payload = std::string(1 + random() % most, 0); char &byte : payload) byte = static_cast<char>(random());
  }
  return table;
}

TEST(records, the_table_grows_to_twice_the_id) {
  for (const auto &[id, capacity] :
       {std::pair(0, 1U), {1, 2}, {34, 68}, {32767, 65534}, {32768, 65535}, {65534, 65535}}) {
    for (const unsigned size : {65531U, 5U, 4U, 1U}) {
      EXPECT_EQ(put(id, std::string(size, 'x')), 0);
      EXPECT_EQ(newest_size(), (size + 7) / 4 * 4 + 1);
      EXPECT_EQ(table(), (records{{id, std::string(size, 'x')}}));
    }
    for (const int bad : {65535, 65536, -1, INT32_MIN}) EXPECT_EQ(put(bad, "b"), -1);
    EXPECT_EQ(put(id, std::string(65532, 'x')), -1);
    EXPECT_EQ(put(id, "") + put(70000, ""), 0);
    EXPECT_EQ(devfacts::eeprom_table.capacity, capacity);
    EXPECT_EQ(table(), (records{{id, "x"}}));
    for (const uint32_t each : {65535U, UINT32_MAX, static_cast<uint32_t>(id)}) eeprom_delete(each);
    EXPECT_EQ(table(), records());
    eeprom_free(), eeprom_free();
    EXPECT_EQ(live_blocks(), 0);
  }
}

// Each line: the id and the bytes of its record; the result, the elements and the payload. Then the ids of two walks
// over a table that changes with the first record.
TEST(records, elements_and_walks) {
  const auto print = [] {
    init();
    for (int id = -1; id < 37; ++id) {
      for (const char *payload : {"", "abcdefghijklmnopqrstuvwx", "abcdefghijklmnopqrstuvw", "xyz"}) {
        const void *data = "";
        uint32_t count = 1;
        put(id, payload);
        const int result = eeprom_get(id, &data, &count);
        std::printf("%d %zu: %d %u %s\n", id, std::strlen(payload), result, count, shown(data, 4).c_str());
      }
    }
    eeprom_free();
    for (const int id : {3, 1, 2}) put(id, "x");
    for (int i = 0; i < 2; ++i) {
      eeprom_for_each([](const eeprom_record *record) {
        std::printf("%d ", record->id);
        if (record->id == 1) eeprom_delete(2), put(300, "x"), put(0, "x"), eeprom_delete(1);
        return -1;
      });
    }
  };
  on_device(print, data("elements") + "||0");
}

TEST(eeprom, thousands_of_operations_end_as_the_model_says) {
  on_device([] {
    std::mt19937 random(20);
    std::string store = with_image("");
    write_file(path, store);
    EXPECT_EQ(init(), -1);
    records wanted;
    for (int i = 0; i < 4000; ++i) {
      const int id = static_cast<int>(random() % (random() % 512 == 0 ? 65535 : 50));
      const unsigned operation = random() % 16;
      if (operation == 0) {
        wanted.clear();
        EXPECT_EQ(init(), search(wanted, store));
      } else if (operation < 4) {
        eeprom_write();
        if (!wanted.empty()) store.replace(place, image(wanted).size(), image(wanted));
        ASSERT_TRUE(data(path) == store) << i;
      } else if (operation < 8) {
        eeprom_delete(static_cast<uint32_t>(id)), wanted.erase(id);
      } else {
        const std::string payload(1 + random() % (random() % 32 == 0 ? 900 : 60), static_cast<char>(random()));
        EXPECT_EQ(put(id, payload), 0);
        wanted[id] = payload;
      }
      ASSERT_TRUE(i % 8 != 0 || table() == wanted) << i;
    }
    eeprom_free();
    EXPECT_EQ(live_blocks(), 0);
  });
}

// Each row: what it is; what the search gives and the records; the image. A file is read without a search.
TEST(eeprom, what_it_makes_of_images) {
  for (const auto &row : rows("images")) {
    on_device([&] {
      std::string made;
      std::istringstream words(row[2]);
      for (unsigned byte = 0; words >> std::hex >> byte;) made += static_cast<char>(byte);
      for (const size_t at : {0U, 16U, 8U, 4080U, 65504U, 4096U}) expect_found(with_image(made, at));
      EXPECT_EQ(std::to_string(init()) + " " + testing::PrintToString(table()), row[1]) << row[0];
      const records found = table();
      write_file("/image", made), eeprom_free(), eeprom_read("/image");
      EXPECT_EQ(table(), found) << row[0];
      expect_found(with_image(sized(made, 48) + image({{5, "new"}, {9, "x"}})));
    });
  }
}

TEST(eeprom, images_that_the_store_cuts_and_the_longest) {
  const auto compare = [] {
    const std::string longest = image({{1, std::string(32700, 'a')}, {2, std::string(32812, 'b')}});
    const std::string across = with_image(image({{7, "12345678"}}), 8176);
    expect_found(longest);
    for (size_t end = 8150; end < 8240; ++end) expect_found(across, end, true), expect_found(across, end, false);
    for (const std::string &file : {longest, image({{1, std::string(32700, 'a')}, {2, std::string(32813, 'b')}})}) {
      write_file("/image", file), eeprom_free(), eeprom_read("/image");
      EXPECT_EQ(image(table()), file == longest ? longest : image({}));
    }
    eeprom_read("/none");
  };
  on_device(compare, "|cannot open '/none' file, No such file or directory\n|0");
}

TEST(eeprom, every_torn_state_of_a_write_loads_as_what_it_holds) {
  on_device([] {
    std::mt19937 random(512);
    const std::string older = image(random_table(random, 30, 250)), newer = image(random_table(random, 20, 250));
    for (std::string before : {with_image(older), with_image(newer)}) {
      const std::string image = before[place + 6] == older[6] ? newer : older;
      const std::string after = std::string(before).replace(place, image.size(), image);
      for (size_t states = 1U << (image.size() + 511) / 512; states-- > 0;) {
        std::string torn = before;
        for (size_t unit = 0, at = place; states >> unit != 0; ++unit, at += 512)
          if ((states >> unit & 1) != 0) torn.replace(at, 512, after, at, 512);
        expect_found(torn);
      }
    }
  });
}

TEST(eeprom, a_writer_killed_at_any_moment_leaves_what_can_be_loaded) {
  on_device([] {
    std::mt19937 random(9);
    write_file(path, "");
    for (int round = 0; round < 60; ++round) {
      const pid_t child = fork();
      while (child == 0) {
        for (const auto &[id, payload] : random_table(random, 20, 900)) put(id, payload);
        eeprom_delete(random() % 40), eeprom_write();
      }
      usleep(500 + random() % 3000);
      kill(child, SIGKILL), waitpid(child, nullptr, 0);
      expect_found(data(path));
    }
  });
}

TEST(eeprom, only_pages_that_change_are_written) {
  on_device([] {
    constexpr unsigned none = 9;
    records wanted{{1, std::string(6000, 'a')}, {2, "b"}, {3, std::string(6000, 'c')}};
    const timespec long_ago[] = {{1, 0}, {1, 0}};
    write_file(path, with_image(image(wanted)));
    chmod(path, 0644), utimensat(0, path, long_ago, 0);
    EXPECT_EQ(init(), 0);
    for (const auto &[page, id] : {std::pair(none, 0), {1U, 2}, {2U, 3}}) {
      on_mapping([page = page](void *mapping, size_t size) {
        mprotect(mapping, size, PROT_READ);
        if (page != none) mprotect(static_cast<char *>(mapping) + page * place, place, PROT_READ | PROT_WRITE);
      });
      if (page != none) wanted[id].back() = 'x', put(id, wanted[id]);
      eeprom_write();
      struct stat status;
      EXPECT_TRUE(stat(path, &status) == 0 && (status.st_mtime == 1 || page != none));
      EXPECT_EQ(data(path), with_image(image(wanted)));
    }
  });
}

TEST(eeprom, an_image_that_does_not_fit_is_not_written) {
  for (const unsigned end : {4096U, 4119U, 4120U, 65532U, 65536U, 69632U}) {
    on_device([=] {
      const std::string store = end == whole ? path : "/dev/mtdblock0", before(end, '-');
      write_file("/proc/mtd", end == whole ? "" : "\nmtd0: 0 0 \"Factory\""), write_file(path, "");
      for (const unsigned size : {24U, 61436U, 61440U, 61444U, 65532U, 65536U}) {
        write_file(store, before), init();
        put(1, std::string(std::min(size, 40000U) - 20, 'a'));
        put(2, std::string(size < 40004 ? 0 : size - 40004, 'b'));
        eeprom_write();
        const bool fits = size + place <= end && size < whole;
        const std::string wanted = fits ? sized(before.substr(0, place) + image(table()), end, '-') : before;
        EXPECT_TRUE(data(store) == wanted) << end << " " << size;
      }
    });
  }
}

TEST(eeprom, partitions_are_found_by_name) {
  for (const auto &row : rows("partitions")) {  // what it is, the name, what the device holds or -1, the list
    on_device([&] {
      for (const char *number : {"0", "1", "2", "3", "8", "10"})
        write_file(std::string("/dev/mtdblock") + number, number);
      EXPECT_EQ(mtd_block_find(row[1].c_str()), -1);
      write_file("/proc/mtd", row[3]);
      const int fd = mtd_block_find(row[1].c_str());
      char text[9] = "-1";
      if (fd >= 0) text[read(fd, text, 8)] = (fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDWR ? '\0' : 'x';
      EXPECT_EQ(text, row[2]) << row[0];
    });
  }
}
