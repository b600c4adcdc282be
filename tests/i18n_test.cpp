// Texts from catalogues on a device of their own.
#include <devfacts/i18n.h>
#include <sys/stat.h>

#include <cstring>

#include "support/test.h"

using namespace test;

const std::string x(4087, 'x');

std::string entry(const std::string &id, const std::string &translation) {
  return "msgid \"" + id + "\"\nmsgstr \"" + translation + "\"\n";
}

void choose(const std::string &language, const std::string &catalogue) {
  write_file("/etc/lang", language);
  write_file("/po/" + language + "/c.po", catalogue);
  EXPECT_EQ(set_po_access_path("c", "/po"), 0);
}

TEST(gettext, what_it_finds_in_a_catalogue) {
  on_device([catalogue = data("catalogue.po"), texts = rows("texts")] {
    choose("de", catalogue + "msgid \"end\"\nmsgstr \"end of file\"");
    for (const auto &row : texts) EXPECT_EQ(gettext(row[0].c_str()), row[1]) << row[0];
    EXPECT_STREQ(gettext(R"(say \"hi\")"), R"(a \)");
    EXPECT_STREQ(gettext("crlf\r"), "crlf\r");
    choose("de", catalogue + "msgid \"end\"");
    EXPECT_STREQ(gettext("end"), "end");
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
    write_file("/po/de/c.po", entry(id, "at once"));
    EXPECT_STREQ(gettext(id), "at once");
    remove("/po/de/c.po");
    errno = 7;
    EXPECT_STREQ(gettext(id), id);
    EXPECT_EQ(errno, 7);
    mkdir("/po/de/c.po", 0700);
    EXPECT_STREQ(gettext(id), "plain");
  });
}

// A line counts up to 4095 characters, and what is behind them is the next.
TEST(gettext, long_lines_and_ids) {
  const std::string last = x.substr(1), cut = x + "12345678";
  const std::vector<std::vector<std::string>> rows = {
      {entry("a", last), "a", last},
      {entry("a", x), "a", "a"},
      {entry(last, "found"), last, "found"},
      {entry(x, "lost"), x, x},
      {"msgid \"" + x + "1msgstr \"found\"", x + "1", "found"},  // the quote has no room in the text to compare with
      {"msgid \"" + x + "1msgstr \"lost\"", x + "2", x + "2"},
      {"msgid \"" + x + "1msgstr \"lost\"", x + "12", x + "12"},
      {"#" + x + "1234567" + entry("a", "behind"), "a", "behind"},
      {"#" + x + "123456" + entry("a", "not a line"), "a", "a"},
      {entry(cut, "lost"), cut + "9", cut},
      {entry("b", x) + entry("a", "next"), "a", "next"},
  };
  on_device([&] {
    for (const auto &row : rows) {
      choose("de", row[0]);
      EXPECT_EQ(gettext(row[1].c_str()), row[2]) << &row - rows.data();
    }
  });
}

TEST(set_po_access_path, takes_the_first_word_of_the_first_line) {
  on_device([languages = rows("languages")] {
    EXPECT_EQ(set_po_access_path("c", "/po"), -1);
    for (const char *language : {"de", "fr"})
      write_file(std::string("/po/") + language + "/c.po", entry("who", language));
    write_file("/po/c.po", entry("who", "none"));
    for (const auto &row : languages) {
      write_file("/etc/lang", row[0]);
      EXPECT_EQ(std::to_string(set_po_access_path("c", "/po")), row[1]) << row[0];
      EXPECT_EQ(gettext("who"), row[2]) << row[0];
    }
    write_file("/etc/lang", x + "12345678de");
    write_file("/po/de/c", entry("who", "cut"));
    EXPECT_EQ(set_po_access_path("c", "/po"), 0);
    EXPECT_STREQ(gettext("who"), "who");
    write_file("/etc/lang", "de");
    std::string folder = "//po";
    while (folder.size() + strlen("/de/c") < 4095) folder += "/.";
    EXPECT_EQ(set_po_access_path("c", folder.c_str()), 0);
    EXPECT_STREQ(gettext("who"), "cut");
    remove("/etc/lang"), mkdir("/etc/lang", 0700);
    EXPECT_EQ(set_po_access_path("c", "/po"), -1);
  });
}
