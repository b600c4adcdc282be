// Texts from catalogues on a device of their own.
#include <devfacts/i18n.h>

#include "support/process.h"

using namespace test;

static std::string entry(const std::string &id, const std::string &translation) {
  return "msgid \"" + id + "\"\nmsgstr \"" + translation + "\"\n";
}

static void install(const std::string &catalogue) {
  write_file("/etc/lang", "de");
  write_file("/po/de/c.po", catalogue);
  EXPECT_EQ(set_po_access_path("c", "/po"), 0);
}

// A line counts up to 4095 characters, and what comes after them is the next line.
TEST(gettext, finds_whole_lines_alone) {
  const std::string longest(4086, 'x');
  const std::string catalogue = read_file("device/po/de/c.po");
  const struct {
    std::string catalogue, id, translation;
  } cases[] = {{catalogue, "plain", "first"},
               {catalogue, "plain text", "an id that begins with another"},
               {catalogue, "crlf", "cut"},
               {catalogue, "empty", ""},
               {catalogue, "", "the empty id"},
               {catalogue, R"(say \"hi\")", R"(a \)"},
               {catalogue, "end", "end of file"},
               {entry("a", longest), "a", longest},
               {entry("a", longest + "x"), "a", "a"},
               {"msgid \"" + longest + "x1msgstr \"found\"", longest + "x1", "found"},
               {"#" + longest + "x1234567" + entry("a", "after"), "a", "after"},
               {"#" + longest + "x123456" + entry("a", "not a line"), "a", "a"},
               {"", longest + "x123456789", longest + "x12345678"},
               {"msgid \"end\"", "end", "end"}};
  on_device([&] {
    for (const auto &each : cases) {
      install(each.catalogue);
      EXPECT_EQ(gettext(each.id.c_str()), each.translation) << each.id.substr(0, 20);
    }
  });
}

TEST(gettext, its_result_lasts_until_the_next_call_and_may_be_its_argument) {
  on_device([] {
    const char id[] = "plain";
    char *result = gettext(id);
    EXPECT_NE(result, id);
    install(entry(id, "first") + entry("first", "of a result"));
    EXPECT_EQ(gettext(id), result);
    EXPECT_STREQ(gettext(result), "of a result");
    EXPECT_STREQ(gettext(gettext("no first") + 3), "of a result");
    std::remove("/po/de/c.po");
    errno = 7;
    EXPECT_STREQ(gettext(id), id);
    EXPECT_EQ(errno, 7);
  });
}

// The language is the first word of the first line.
TEST(set_po_access_path, languages) {
  constexpr std::pair<const char *, const char *> cases[] = {
      {"de\n", "de"}, {" de\n", "none"}, {"fr en\n", "fr"}, {"it", "who"}};
  on_device([&] {
    for (const std::string path : {"de/c.po", "fr/c.po", "c.po"})
      write_file("/po/" + path, entry("who", path == "c.po" ? "none" : path.substr(0, 2)));
    for (const auto &[file, catalogue] : cases) {
      write_file("/etc/lang", file);
      EXPECT_EQ(set_po_access_path("c", "/po"), 0) << file;
      EXPECT_STREQ(gettext("who"), catalogue) << file;
    }
  });
}
