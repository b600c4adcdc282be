// Texts from catalogues on a device of their own.
#include <devfacts/i18n.h>

#include "support/test.h"

using namespace test;

std::string entry(const std::string &id, const std::string &translation) {
  return "msgid \"" + id + "\"\nmsgstr \"" + translation + "\"\n";
}

void choose(const std::string &language, const std::string &catalogue) {
  write_file("/etc/lang", language);
  write_file("/po/" + language + "/c.po", catalogue);
  EXPECT_EQ(set_po_access_path("c", "/po"), 0);
}

// A line counts up to 4095 characters, and what is behind them is the next.
TEST(gettext, finds_whole_lines_alone) {
  on_device([catalogue = data("catalogue.po"), table = rows("texts")] {
    choose("de", catalogue);
    EXPECT_STREQ(gettext(R"(say \"hi\")"), R"(a \)");
    for (const auto &row : table) {  // the catalogue where it is another one, what is asked for, what that gives
      choose("de", row[0].empty() ? catalogue : row[0]);
      EXPECT_EQ(gettext(row[1].c_str()), row[2]) << row[0] << row[1];
    }
  });
}

TEST(gettext, its_result_lasts_until_the_next_call_and_may_be_its_argument) {
  on_device([catalogue = data("catalogue.po")] {
    const char id[] = "plain";
    char *result = gettext(id);
    EXPECT_NE(result, id);
    EXPECT_STREQ(result, id);
    choose("de", catalogue);
    EXPECT_EQ(gettext(id), result);
    EXPECT_STREQ(gettext(result), "of a result");
    EXPECT_STREQ(gettext(gettext("no first") + 3), "of a result");
    std::string lines;
    while (lines.size() < 5000) lines += "msgid \"";  // whose start is a line that the cut id would have
    write_file("/po/de/c.po", entry(id, "at once") + lines.substr(0, 4095) + "msgstr \"lost\"");
    EXPECT_EQ(gettext(lines.c_str()), lines.substr(0, 4095));
    for (const char *translation : {"at once", id}) {
      errno = 7;
      EXPECT_STREQ(gettext(id), translation);
      EXPECT_EQ(errno, 7);
      remove("/po/de/c.po");
    }
  });
}

TEST(set_po_access_path, takes_the_first_word_of_the_first_line) {
  on_device([languages = rows("languages")] {
    for (const char *language : {"de", "fr"}) choose(language, entry("who", language));
    write_file("/po/c.po", entry("who", "none")), write_file("/po/de/c", entry("who", "cut"));
    for (const auto &row : languages) {  // the file, the result, the catalogue
      write_file("/etc/lang", row[0]);
      EXPECT_EQ(std::to_string(set_po_access_path("c", "/po")), row[1]) << row[0];
      EXPECT_EQ(gettext("who"), row[2]) << row[0];
    }
    std::string folder = "//po";
    while (folder.size() + sizeof "/de/c" < 4096) folder += "/.";
    EXPECT_EQ(set_po_access_path("c", folder.c_str()), 0);
    remove("/etc/lang");
    EXPECT_EQ(set_po_access_path("c", "/po"), -1);
    EXPECT_STREQ(gettext("who"), "cut");
  });
}
