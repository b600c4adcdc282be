#include <devfacts/core.h>

#include <cstring>

#include "support/test.h"

using namespace test;

// Prints each pair, and ends the walk behind one that says so.
int print_pair(void *, char *key, char *value) {
  std::printf("[%.20s/%.20s]", key, value);
  return std::strcmp(value, "last") == 0 ? -7 : 0;
}

TEST(scanner, lines_are_selected_and_split) {
  for (const auto &row : rows("scans")) {  // the prefix, the file, the pairs
    const auto walk = [&row] { write_file("/f", row[1]), iterate("/f", row[0].c_str(), print_pair, nullptr); };
    on_device(walk, row[2] + "||0");
  }
}

TEST(scanner, a_stream_is_walked_from_its_start_and_left_where_the_walk_ended) {
  const auto walk = [] {
    char text[] = "a=1\nb=last\nc=3\n";
    FILE *stream = fmemopen(text, sizeof text - 1, "r");
    fseek(stream, 0, SEEK_END);
    iterate_raw(stream, nullptr, print_pair, nullptr);
    iterate_raw(stream, nullptr, nullptr, nullptr), iterate_raw(nullptr, nullptr, print_pair, nullptr);
    std::printf("%ld", ftell(stream));
    fclose(stream);
    write_file("/f", "a=1"), iterate("/f", nullptr, nullptr, nullptr);
    for (const char *path : {"/missing", "/"}) iterate(path, nullptr, print_pair, nullptr);
  };
  on_device(walk, "[a/1][b/last]11||0");
}

TEST(scanner, first_matches_are_32_bits_wide_or_a_copy) {
  for (auto &row : rows("numbers")) {  // a value, the numbers that it gives and whether it does
    first_match_u32 u32{}, i32{};
    first_match_string text{};
    EXPECT_EQ(__return_first_match_in_u32(&u32, nullptr, row[0].data()), 1);
    EXPECT_EQ(__return_first_match_in_i32(&i32, nullptr, row[0].data()), 1);
    EXPECT_EQ(__return_first_match_in_string(&text, nullptr, row[0].data()), 1);
    EXPECT_EQ(listed(u32.value, u32.found, static_cast<int32_t>(i32.value), i32.found), row[1]) << row[0];
    EXPECT_EQ(listed(text.value != row[0].data(), text.found, newest_size()), listed(1, 1, row[0].size() + 1));
    EXPECT_EQ(text.value, row[0]);
    test_free(text.value);
  }
}

TEST(scanner, hardware_addresses) {
  for (const auto &row : rows("addresses")) {
    uint8_t a[7] = {0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee};
    char seen[100];
    const int result = parse_macaddr(a, (row[0] + '\0' + "6").c_str());  // the text ends before the last group
    std::snprintf(seen, sizeof seen, "%d %x %x %x %x %x %x %x", result, a[0], a[1], a[2], a[3], a[4], a[5], a[6]);
    EXPECT_EQ(seen, row[1]) << row[0];
  }
}
