#include <devfacts/core.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "support/test.h"

using namespace test;

TEST(core, die_prints_its_text_alone_and_flushes) {
  expect_run("pending|answer is 42|1", [] { std::printf("pending"), die("%s is %d", "answer", 42); });
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
  expect_run("|cannot set FD_CLOEXEC flag.\n|1", [] { set_coe(-1); });
  for (const auto set : {set_bio, set_nio}) expect_run("|cannot set O_NONBLOCK flags.\n|1", [=] { set(-1); });
}

TEST(core, there_is_one_control_socket_until_it_is_closed) {
  expect_run("|cannot create socket, Too many open files\n|1", [] {
    close(STDIN_FILENO);  // number 0 is free, and counts as open
    EXPECT_EQ(ioctl_socket(), 0);
    EXPECT_EQ(ioctl_socket(), 0);
    ioctl_close();
    EXPECT_EQ(open("/dev/null", O_RDONLY), 0);
    ioctl_close();
    EXPECT_EQ(fcntl(0, F_GETFD), 0);
    EXPECT_NE(ioctl_socket(), 0);
    ioctl_close();
    fail("socket", 1, EMFILE);
    ioctl_socket();
  });
}

TEST(core, white_space_is_cut_at_the_ends_only) {
  const std::string rows[][3] = {{"", "", ""},  // a text, its right and its left end cut
                                 {" \t\n\v\f\r", "", ""},
                                 {" a b \r\n", " a b", "a b \r\n"},
                                 {"\xa0x\x85", "\xa0x\x85", "\xa0x\x85"},
                                 {"\x1fx\x0e", "\x1fx\x0e", "\x1fx\x0e"}};
  for (const auto &[text, right, left] : rows) {
    std::string guarded = " " + text;  // a blank in front that must stay
    EXPECT_EQ(trimr_string(guarded.data() + 1), guarded.data() + 1);
    EXPECT_EQ(guarded, " " + right + std::string(text.size() - right.size(), '\0'));
    EXPECT_EQ(triml_string(text.c_str()), left);
  }
}

TEST(core, escaping) {
  const char *rows[][2] = {{"", ""},
                           {"plain \x01\xc3\xa4", "plain \x01\xc3\xa4"},
                           {"'\"&<>", "&apos;&quot;&amp;&lt;&gt;"},
                           {"&amp;&", "&amp;amp;&amp;"}};
  for (const auto &[text, escaped] : rows) {
    char room[64], *made = escape_xml(text, nullptr);
    EXPECT_STREQ(made, escaped);
    EXPECT_EQ(newest_size(), strlen(escaped) + 1);
    free(made);
    EXPECT_EQ(escape_xml(text, room), room);
    EXPECT_STREQ(room, escaped);
  }
  fail("allocation", 1, ENOMEM);
  EXPECT_EQ(escape_xml("x", nullptr), nullptr);
}

TEST(core, xml_item_lines) {
  expect_run(shell("cat items.xml") + "||0", [] {
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
}
