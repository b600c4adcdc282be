#include <devfacts/core.h>
#include <devfacts/net.h>

#include <cstring>

#include "support/test.h"

using namespace test;

TEST(core, die_prints_its_text_alone_and_flushes) {
  expect_run("pending|answer is 42|1", [] { std::printf("pending"), die("%s is %d", "answer", 42); });
}

TEST(core, white_space_is_cut_at_the_ends_only) {
  for (const auto &row : rows("spaces")) {  // a text, the same without its end, the same without its start
    std::string guarded = " " + row[0];     // a blank in front that must stay
    EXPECT_EQ(trimr_string(guarded.data() + 1), guarded.data() + 1);
    EXPECT_EQ(shown(guarded.data(), guarded.size()), row[1]);
    EXPECT_EQ(triml_string(row[0].c_str()), row[2]);
  }
}

TEST(core, items_and_addresses) {
  expect_run(data("items.xml") + "||0", [null = static_cast<const char *>(nullptr)] {
    for (const char *text : {"", "plain \x01\xc3\xa4", "'\"&<>", "&amp;&"}) {
      char room[64], *made = escape_xml(text, nullptr);
      EXPECT_EQ(newest_size(), strlen(made) + 1);
      EXPECT_STREQ(escape_xml(text, room), made);
      xml_str_item("text", room), test_free(made);
    }
    for (const char *value : {null, "", "<&"}) {
      xml_str_item("a<", value), xml_str_esc_item("b", value), ifi_xml_str_item("A", value);
    }
    xml_int_item("c", INT32_MIN), xml_int64_item("e", INT64_MIN), xml_double_item("f", -0.5);
    xml_int_item_opt("d", 7, 0), xml_int_item_opt("d", -7, 0x80);
    xml_str_item(null, "value"), xml_int_item_opt(null, 7, 0), ifi_xml_str_item(null, "value");
    EXPECT_EQ(live_blocks(), 0);
    ifi_xml_int_item("B", UINT32_MAX);
    const uint8_t mac[] = {1, 2, 3, 4, 5, 6};
    char room[6] = "?????";
    EXPECT_EQ(ifi_mac_ntop(room, 4, mac) + std::string(room + 4), "01:?");
    EXPECT_EQ(ifi_ip_ntop(room, sizeof room, nullptr), nullptr);
  });
}
