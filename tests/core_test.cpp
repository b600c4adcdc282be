#include <devfacts/core.h>
#include <devfacts/net.h>

#include "support/faults.h"
#include "support/process.h"

using namespace test;

TEST(addresses, are_six_groups_of_up_to_a_byte) {
  constexpr struct {
    const char *text, *result;  // and the bytes, of which those from the first bad group on are as before
  } cases[] = {
      {"00:1b:2C:d:0ff:0xfe", "0 00:1B:2C:0D:FF:FE"},  {" 1: 2:\t3:+4:0005:-0", "0 01:02:03:04:05:00"},
      {"1:2:3:4:5:6:seventh", "0 01:02:03:04:05:06"},  {"1:2:3:4:5", "-1 01:02:03:04:05:EE"},
      {"1:2:3:4:5:", "-1 01:02:03:04:05:EE"},          {"1:2:3:4:5:6 ", "-1 01:02:03:04:05:EE"},
      {"1:2:3:4:5:100", "-1 01:02:03:04:05:EE"},       {"1:2::4:5:6", "-1 01:02:EE:EE:EE:EE"},
      {"1:2:g:4:5:6", "-1 01:02:EE:EE:EE:EE"},         {"1:-1:3:4:5:6", "-1 01:EE:EE:EE:EE:EE"},
      {"fffffffffffffffff:2", "-1 EE:EE:EE:EE:EE:EE"},
  };
  for (const auto &each : cases) {
    uint8_t mac[7] = {0xee, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee};
    char text[18];
    const int result = parse_macaddr(mac, (each.text + std::string("\0006", 2)).c_str());  // the text ends before the 6
    EXPECT_EQ(std::to_string(result) + " " + ifi_mac_ntop(text, sizeof text, mac), each.result) << each.text;
    EXPECT_EQ(mac[6], 0xee);
  }
  char buffer[] = "?????";
  EXPECT_STREQ(ifi_mac_ntop(buffer, 4, reinterpret_cast<const uint8_t *>("abcdef")), "61:");
  EXPECT_EQ(buffer[4], '?');
  EXPECT_EQ(ifi_ip_ntop(buffer, sizeof buffer, nullptr), nullptr);
}

// Prints each pair, and ends the walk after the value "last".
static int print_pair(void * /*context*/, char *key, char *value) {
  std::printf("[%.20s/%.20s]", key, value);
  return std::strcmp(value, "last") == 0 ? -7 : 0;
}

TEST(scanner, lines_are_selected_and_split) {
  const std::string longest = "a=" + std::string(1021, 'v');  // with its NUL it fills the buffer
  const struct {
    const char *prefix;
    std::string file, pairs;
  } cases[] = {
      {"", "Retried: 12\na=b:c\na:b=c\nTx Packets 12\nkey:\n=x", "[Retried/12][a/b:c][a/b=c][Tx/Packets 12][key/][/x]"},
      {"", "a=1\nword\nb=2", "[a/1]"},
      {"", "a\t=\tb\t\n\n\t\n k = v w\n\xa0:\xa0\na\tb\nb=2", "[a/b][k/v w][\xa0/\xa0]"},
      {"b c", "b=2\nb c=3\nb cd 4\nb cword\nb c=5", "[b c/3][b/cd 4][b/cword][b c/5]"},
      {"", longest + "\nc=3\n", "[a/vvvvvvvvvvvvvvvvvvvv][c/3]"},
      {"", longest + "x=2\nc=3\n", "[a/vvvvvvvvvvvvvvvvvvvv][x/2][c/3]"},
  };
  for (const auto &each : cases) {
    const auto walk = [&] {
      write_file("/f", each.file);
      iterate("/f", each.prefix, print_pair, nullptr);
    };
    on_device(walk, each.pairs);
  }
}

TEST(scanner, a_stream_is_walked_from_its_start_and_left_at_the_end_of_the_walk) {
  const auto walk = [] {
    char text[] = "a=1\nb=last\nc=3\n";
    FILE *stream = fmemopen(text, sizeof text - 1, "r");
    fseek(stream, 0, SEEK_END);
    iterate_raw(stream, nullptr, print_pair, nullptr);
    iterate_raw(stream, nullptr, nullptr, nullptr);
    iterate_raw(nullptr, nullptr, print_pair, nullptr);
    std::printf("%ld", ftell(stream));
    write_file("/f", "a=1");
    iterate("/f", nullptr, nullptr, nullptr);
    for (const char *path : {"/missing", "/"}) iterate(path, nullptr, print_pair, nullptr);
  };
  on_device(walk, "[a/1][b/last]11");
}

TEST(scanner, first_matches_are_32_bits_wide_or_a_copy) {
  constexpr struct {
    const char *text, *numbers;  // unsigned and signed, each with whether it is one
  } cases[] = {{"12", "12 1 12 1 "},
               {" +7x", "7 1 7 1 "},
               {"-1", "4294967295 1 -1 1 "},
               {"2147483648", "2147483648 1 2147483647 0 "},
               {"-2147483648", "2147483648 1 -2147483648 1 "},
               {"4294967295", "4294967295 1 2147483647 0 "},
               {"4294967296", "4294967295 0 2147483647 0 "},
               {"-4294967295", "1 1 -2147483648 0 "},
               {"99999999999999999999", "4294967295 0 2147483647 0 "}};
  for (const auto &each : cases) {
    std::string value = each.text;
    first_match_u32 u32{};
    first_match_u32 i32{};
    first_match_string copy{};
    EXPECT_EQ(__return_first_match_in_u32(&u32, nullptr, value.data()), 1);
    EXPECT_EQ(__return_first_match_in_i32(&i32, nullptr, value.data()), 1);
    EXPECT_EQ(__return_first_match_in_string(&copy, nullptr, value.data()), 1);
    EXPECT_EQ(listed(u32.value, u32.found, static_cast<int32_t>(i32.value), i32.found), each.numbers) << each.text;
    EXPECT_EQ(newest_size(), value.size() + 1);
    EXPECT_EQ(copy.value, value);
    EXPECT_EQ(copy.found, 1);
    test_free(copy.value);
  }
}
