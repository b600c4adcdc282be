#include <devfacts/core.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/faults.h"
#include "support/process.h"

namespace {

using test::expect_clean;
using test::expect_death;
using test::in_child;

TEST(fatal, exits_with_its_text_alone_and_flushes) {
  const auto result = in_child([] {
    std::printf("pending");
    die("%s is %d", "answer", 42);
  });
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "answer is 42");
  EXPECT_EQ(result.out, "pending");
}

TEST(descriptor, one_flag_changes_and_the_others_stay) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_DIRECT), 0);
  const int before = fcntl(ends[0], F_GETFL);
  EXPECT_EQ(set_nio(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFL), before | O_NONBLOCK);
  EXPECT_EQ(set_bio(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFL), before);
  EXPECT_EQ(set_coe(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFD), FD_CLOEXEC);
}

TEST(descriptor, a_bad_one_ends_the_process) {
  expect_death([] { set_coe(-1); }, "cannot set FD_CLOEXEC flag.\n");
  expect_death([] { set_bio(-1); }, "cannot set O_NONBLOCK flags.\n");
  expect_death([] { set_nio(-1); }, "cannot set O_NONBLOCK flags.\n");
}

TEST(control_socket, is_one_until_it_is_closed) {
  expect_clean([] {
    close(STDIN_FILENO);  // number 0 is free, and counts as open
    test::fail("socket", 2, EMFILE);
    EXPECT_EQ(ioctl_socket(), 0);
    EXPECT_EQ(ioctl_socket(), 0);
    EXPECT_EQ(test::calls_seen(), 1);
    ioctl_close();
    EXPECT_EQ(fcntl(0, F_GETFD), -1);
    const int other = open("/dev/null", O_RDONLY);
    ioctl_close();
    EXPECT_EQ(fcntl(other, F_GETFD), 0);
    test::fail("socket", 2, EMFILE);
    EXPECT_NE(ioctl_socket(), other);
  });
  expect_death([] { test::fail("socket", 1, EMFILE), ioctl_socket(); }, "cannot create socket, Too many open files\n");
}

TEST(text, white_space_is_cut_at_the_ends_only) {
  const struct {
    const char *text, *right, *left;
  } rows[] = {
      {"", "", ""},
      {" \t\n\v\f\r", "", ""},
      {" a b \r\n", " a b", "a b \r\n"},
      {"\xa0x\x85", "\xa0x\x85", "\xa0x\x85"},
      {"\x1fx\x0e", "\x1fx\x0e", "\x1fx\x0e"},
  };
  for (const auto &row : rows) {
    std::string guarded = std::string(" ") + row.text;  // a blank in front that must stay
    EXPECT_EQ(trimr_string(guarded.data() + 1), guarded.data() + 1);
    EXPECT_STREQ(guarded.c_str() + 1, row.right);
    EXPECT_EQ(guarded[0], ' ');
    EXPECT_EQ(guarded.find_first_of(" \t\n\v\f\r", 1 + strlen(row.right)), std::string::npos);
    EXPECT_STREQ(triml_string(row.text), row.left);
  }
}

TEST(xml, escaping) {
  const struct {
    const char *text, *escaped;
  } rows[] = {
      {"", ""},
      {"plain \x01\xc3\xa4", "plain \x01\xc3\xa4"},
      {"'\"&<>", "&apos;&quot;&amp;&lt;&gt;"},
      {"&amp;", "&amp;amp;"},
      {"&&&", "&amp;&amp;&amp;"},
  };
  for (const auto &row : rows) {
    const std::unique_ptr<char, decltype(&free)> made{escape_xml(row.text, nullptr), free};
    EXPECT_EQ(test::newest_size(), strlen(row.escaped) + 1);
    EXPECT_STREQ(made.get(), row.escaped);
    char room[64];
    EXPECT_EQ(escape_xml(row.text, room), room);
    EXPECT_STREQ(room, row.escaped);
  }
  test::fail("allocation", 1, ENOMEM);
  EXPECT_EQ(escape_xml("x", nullptr), nullptr);
}

TEST(xml, item_lines) {
  const auto result = in_child([] {
    xml_str_item(nullptr, "value");
    xml_str_item("a", nullptr);
    xml_str_item("a", "");
    xml_str_item("a<", "<&");
    xml_str_esc_item("b", "");
    xml_str_esc_item("b", "<&");
    xml_int_item("c", INT32_MIN);
    xml_int_item_opt("d", 7, 0);
    xml_int_item_opt("d", -7, 0x80);
    xml_int_item_opt(nullptr, 7, 0);
    xml_int64_item("e", INT64_MIN);
    xml_double_item("f", -0.5);
    const long blocks = test::live_blocks();
    xml_str_esc_item("g", "kept");
    EXPECT_EQ(test::live_blocks(), blocks);
    test::fail("allocation", 1, ENOMEM);
    xml_str_esc_item("g", "lost");
  });
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.out,
      "  <a>N/A</a>\n  <a>N/A</a>\n  <a<><&</a<>\n  <b>N/A</b>\n  <b>&lt;&amp;</b>\n  <c>-2147483648</c>\n"
      "  <d>N/A</d>\n  <d>-7</d>\n  <e>-9223372036854775808</e>\n  <f>-0.500000</f>\n  <g>kept</g>\n  <g>N/A</g>\n");
}

}  // namespace
