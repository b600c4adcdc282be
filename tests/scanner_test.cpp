#include <devfacts/core.h>

#include "support/test.h"

using namespace test;

// Prints each pair and ends the walk when the count is used up.
int print_pair(void *count, char *key, char *value) {
  std::printf("[%.20s/%.20s]", key, value);
  return --*static_cast<int *>(count) == 0 ? -7 : 0;
}

void expect_pairs(const char *prefix, const std::string &file, const std::string &pairs) {
  const auto walk = [&] {
    int count = 6;
    write_file("/f", file);
    iterate("/f", prefix, print_pair, &count);
  };
  on_device(walk, pairs + "||0");
}

TEST(scanner, lines_are_selected_and_split) {
  for (const auto &row : rows("scans")) expect_pairs(row[0].c_str(), row[1], row[2]);
  const std::string k1023(1023, 'k'), v1021(1021, 'v'), nul("a=1\0x=2\nb=3", 11), blanks(2000, ' ');
  expect_pairs(nullptr, "\n \v\n k =\v v w\f\r\n\n\xa0:\x85", "[k/v w][\xa0/\x85]");
  expect_pairs(nullptr, "a=" + v1021 + "b=2\nc=3\n", "[a/vvvvvvvvvvvvvvvvvvvv][b/2][c/3]");
  expect_pairs(nullptr, "a=1\n" + k1023 + "=1\nb=2", "[a/1]");
  expect_pairs(nullptr, blanks + nul, "[a/1][b/3]");
}

TEST(scanner, a_stream_is_walked_from_its_start_and_left_where_the_walk_ended) {
  const auto walk = [] {
    char text[] = "a=1\nb=2\nc=3\n";
    FILE *stream = fmemopen(text, sizeof text - 1, "r");
    fseek(stream, 0, SEEK_END);
    int count = 2;
    iterate_raw(stream, nullptr, print_pair, &count);
    std::printf("%ld", ftell(stream));
    iterate_raw(stream, nullptr, nullptr, &count), iterate_raw(nullptr, nullptr, print_pair, &count);
    EXPECT_EQ(ftell(stream), 8);
    fclose(stream);
    write_file("/f", "a=1");
    iterate("/f", nullptr, nullptr, &count);
    for (const char *path : {"/missing", "/"}) iterate(path, nullptr, print_pair, &count);
  };
  on_device(walk, "[a/1][b/2]8||0");
}

TEST(scanner, first_matches_are_32_bits_wide) {
  for (auto &row : rows("numbers")) {
    first_match_u32 u32{}, i32{};
    EXPECT_EQ(__return_first_match_in_u32(&u32, nullptr, row[0].data()), 1);
    EXPECT_EQ(__return_first_match_in_i32(&i32, nullptr, row[0].data()), 1);
    EXPECT_EQ(listed(u32.value, u32.found, static_cast<int32_t>(i32.value), i32.found), row[1]) << row[0];
  }
}

TEST(scanner, values_are_collected) {
  on_device([] {
    write_file("/f", "x=0\na.1=one\n a.2 = two \nb=3\na.3:\na.4\na.5=five");
    keyval_list list{reinterpret_cast<keyval_entry *>(8), 77};
    keyvalue("/f", "a", &list);
    std::string seen;
    for (int i = 0; i < list.count; ++i) seen += list.rows[i].value + std::to_string(list.rows[i].length) + "|";
    EXPECT_EQ(seen, "one3|two3|0|");
    for (int i = 0; i < 2; ++i) keyval_destroy(&list);
    EXPECT_TRUE(list.count == 0 && list.rows == nullptr && live_blocks() == 0);
    keyval_list none{reinterpret_cast<keyval_entry *>(8), 77};
    keyvalue("/missing", nullptr, &none), keyval_destroy(&none);
    EXPECT_TRUE(none.count == 0 && none.rows == reinterpret_cast<keyval_entry *>(8));
    keyvalue("/f", nullptr, nullptr), keyval_destroy(nullptr);
  });
}

TEST(scanner, a_first_text_is_copied) {
  char value[] = "text";
  first_match_string slot{};
  EXPECT_EQ(__return_first_match_in_string(&slot, nullptr, value), 1);
  EXPECT_TRUE(slot.value != value && slot.found == 1 && newest_size() == 5);
  EXPECT_STREQ(slot.value, "text");
  free(slot.value);
}

TEST(scanner, hardware_addresses) {
  for (const auto &row : rows("addresses")) {
    uint8_t a[7] = {0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee};
    char seen[100];
    const int result = parse_macaddr(a, row[0].c_str());
    std::snprintf(seen, sizeof seen, "%d %x %x %x %x %x %x %x", result, a[0], a[1], a[2], a[3], a[4], a[5], a[6]);
    EXPECT_EQ(seen, row[1]) << row[0];
  }
}
