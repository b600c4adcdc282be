#include <devfacts/core.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "support/faults.h"
#include "support/process.h"

namespace {

using namespace test;

TEST(core, die_prints_its_text_alone_and_flushes) {
  const outcome result = in_child([] { std::printf("pending"), die("%s is %d", "answer", 42); });
  EXPECT_EQ(result.all(), "pending|answer is 42|1");
}

TEST(core, one_descriptor_flag_changes_and_the_others_stay) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_DIRECT), 0);
  const int before = fcntl(ends[0], F_GETFL);
  EXPECT_EQ(set_nio(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFL), before | O_NONBLOCK);
  EXPECT_EQ(set_bio(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFL), before);
  EXPECT_EQ(set_coe(ends[0]), 0);
  EXPECT_EQ(fcntl(ends[0], F_GETFD), FD_CLOEXEC);
  expect_death("cannot set FD_CLOEXEC flag.\n", [] { set_coe(-1); });
  expect_death("cannot set O_NONBLOCK flags.\n", [] { set_bio(-1); });
  expect_death("cannot set O_NONBLOCK flags.\n", [] { set_nio(-1); });
}

TEST(core, there_is_one_control_socket_until_it_is_closed) {
  expect_clean([] {
    close(STDIN_FILENO);  // number 0 is free, and counts as open
    fail("socket", 2, EMFILE);
    EXPECT_EQ(ioctl_socket(), 0);
    EXPECT_EQ(ioctl_socket(), 0);
    ioctl_close();
    EXPECT_EQ(open("/dev/null", O_RDONLY), 0);
    ioctl_close();
    EXPECT_EQ(fcntl(0, F_GETFD), 0);
    fail("socket", 2, EMFILE);
    EXPECT_NE(ioctl_socket(), 0);
  });
  expect_death("cannot create socket, Too many open files\n", [] { fail("socket", 1, EMFILE), ioctl_socket(); });
}

TEST(core, white_space_is_cut_at_the_ends_only) {
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
    const std::string text = row.text, right = row.right;
    std::string guarded = " " + text;  // a blank in front that must stay
    EXPECT_EQ(trimr_string(guarded.data() + 1), guarded.data() + 1);
    EXPECT_EQ(guarded, " " + right + std::string(text.size() - right.size(), '\0'));
    EXPECT_STREQ(triml_string(row.text), row.left);
  }
}

TEST(core, escaping) {
  const struct {
    const char *text, *escaped;
  } rows[] = {
      {"", ""},
      {"plain \x01\xc3\xa4", "plain \x01\xc3\xa4"},
      {"'\"&<>", "&apos;&quot;&amp;&lt;&gt;"},
      {"&amp;&", "&amp;amp;&amp;"},
  };
  for (const auto &row : rows) {
    char room[64], *made = escape_xml(row.text, nullptr);
    EXPECT_STREQ(made, row.escaped);
    EXPECT_EQ(newest_size(), strlen(row.escaped) + 1);
    free(made);
    EXPECT_EQ(escape_xml(row.text, room), room);
    EXPECT_STREQ(room, row.escaped);
  }
  fail("allocation", 1, ENOMEM);
  EXPECT_EQ(escape_xml("x", nullptr), nullptr);
}

TEST(core, xml_item_lines) {
  const outcome result = in_child([] {
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
    EXPECT_EQ(live_blocks(), 0);
    fail("allocation", 1, ENOMEM);
    xml_str_esc_item("g", "lost");
  });
  EXPECT_EQ(result.all(),
            "  <a>N/A</a>\n  <a>N/A</a>\n  <a<><&</a<>\n  <b>N/A</b>\n  <b>&lt;&amp;</b>\n  <c>-2147483648</c>\n"
            "  <d>N/A</d>\n  <d>-7</d>\n  <e>-9223372036854775808</e>\n  <f>-0.500000</f>\n  <g>N/A</g>\n||0");
}

}  // namespace
