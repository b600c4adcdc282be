#include "description.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "core/owner.h"
#include "core/text.h"
#include "text.h"

namespace devfacts::tool {
namespace {

// The keys that the library reads: their start, in which # is an index, and their ends. A row is there if it has the
// key of that end.
constexpr struct {
  const char *start;
  const char *row_end;
  const char *ends;
} known_keys[] = {
    {"product", "", " id name hardware enterprise-name countrycode enterprise-oid protocol-name "},
    {"radio.#", "master",
     " master ieee-band allowed-modulations txpower-offset min-txpower antenna-gain frequency-offset ignore-crr"
     " cpe.fixed-channels band-edges.low band-edges.middle band-edges.high "},
    {"radio.#.frequency.#", "range", " range max-eirp max-txpower max-width dfs-required range-limits "},
    {"limits.#", "table-name", " table-name "},
    {"limits.#.table.#", "frequency", " frequency dfs-required max-txpower max-eirp allowed-widths "},
    {"led", "", " power.name blinkled.name "},
    {"led.lan.#", "name", " name devname "},
    {"led.rssi.#", "devname", " devname names "},
    {"feature", "", " pppoe-filter-control arpnat-behind-dhcp-snooper "},
};

// What the stand-in for the configuration store reads of a file and of a key.
constexpr size_t max_file = 1 << 20;
constexpr size_t max_key = 511;

using text_view = std::string_view;

// For "%.*s".
#define PRINTED(text) static_cast<int>((text).size()), (text).data()

// A line of the file: KEY=VALUE, or without a key one that is passed over.
struct entry {
  text_view key;
  text_view value;
};

// Takes the first line off the text. False if it is malformed.
bool take_line(text_view &text, entry &line) {
  const size_t end = text.find('\n');
  text_view rest = leading(text, end);
  text.remove_prefix(end == text_view::npos ? text.size() : end + 1);
  if (rest.ends_with('\r')) rest.remove_suffix(1);
  line = {};
  if (rest.find('\0') != text_view::npos) return false;
  while (!rest.empty() && is_space(rest.front())) rest.remove_prefix(1);
  if (rest.empty() || rest.front() == '#') return true;
  const size_t length = static_cast<size_t>(
      std::find_if(rest.begin(), rest.end(), [](char c) { return c == '=' || is_space(c); }) - rest.begin());
  if (length == 0 || length > max_key || length == rest.size() || rest[length] != '=') return false;
  line = {leading(rest, length), after(rest, length + 1)};
  return true;
}

// The characters at the start of a key that are an index: a decimal number that an int holds, in its only spelling.
size_t index_size(text_view key) {
  int index = 0;
  const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
  const auto size = static_cast<size_t>(end - key.data());
  const bool is_spelled = !key.starts_with('-') && (size == 1 || !key.starts_with('0'));
  return error == std::errc{} && is_spelled ? size : 0;
}

// The size of the start of a key, if it is this one with indices; else 0.
size_t start_size(text_view key, text_view start) {
  size_t at = 0;
  for (const char each : start) {
    const text_view rest = after(key, at);
    const size_t size = each == '#' ? index_size(rest) : rest.starts_with(each) ? 1 : 0;
    if (size == 0) return 0;
    at += size;
  }
  return after(key, at).starts_with('.') ? at : 0;
}

bool is_word_of(text_view word, text_view words) {
  if (word.empty()) return false;
  for (size_t at = words.find(word); at != text_view::npos; at = words.find(word, at + 1)) {
    if (words[at - 1] == ' ' && words[at + word.size()] == ' ') return true;
  }
  return false;
}

// Does a line of the text have this key? With an end: the key START.END.
bool has_key(text_view text, text_view start, text_view end) {
  entry line;
  while (!text.empty() && take_line(text, line)) {
    const bool is_start = line.key.starts_with(start) && after(line.key, start.size()).starts_with('.');
    if (is_start && (end.empty() || after(line.key, start.size() + 1) == end)) return true;
  }
  return false;
}

bool has_figures(text_view value) {
  char text[64];
  int low = 0;
  int high = 0;
  char separator = '\0';
  std::snprintf(text, sizeof text, "%.*s", PRINTED(value));
  // NOLINTNEXTLINE(cert-err34-c): as the library reads it
  return std::sscanf(text, " %d %c %d", &low, &separator, &high) == 3 && separator == '-';
}

// Looks a file through, line by line.
class inspection {
 public:
  inspection(const char *path, text_view text) : path_(path), text_(text) {}

  bool is_clean() {
    for (text_view rest = text_; !rest.empty();) {
      entry line;
      const text_view before = leading(text_, text_.size() - rest.size());
      ++number_;
      if (!take_line(rest, line)) {
        say("not KEY=VALUE: because of this line nothing of the file is read");
        break;
      }
      if (!line.key.empty()) inspect(line, before);
    }
    return is_clean_;
  }

 private:
  DEVFACTS_PRINTF(2, 3) void say(const char *format, ...) {
    char text[1024];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    print_visible(stdout, path_);
    std::printf(":%u: ", number_);
    print_visible(stdout, text);
    std::putchar('\n');
    is_clean_ = false;
  }

  void inspect(const entry &line, text_view before) {
    bool is_known = false;
    for (const auto &each : known_keys) {
      const size_t size = start_size(line.key, each.start);
      if (size == 0) continue;
      const text_view end = after(line.key, size + 1);
      const text_view value = line.value;
      const bool is_read = is_word_of(end, each.ends);
      is_known = is_known || is_read;
      if (is_read && end == "range" && !has_figures(value)) say("no LOW-HIGH in \"%.*s\"", PRINTED(value));
      if (*each.row_end != '\0') inspect_row(leading(line.key, size), each.row_end, before);
    }
    if (!is_known) say("nothing reads \"%.*s\"", PRINTED(line.key));
  }

  // Said once, at the first line of the row.
  void inspect_row(text_view row, const char *end, text_view before) {
    if (has_key(before, row, {}) || has_key(text_, row, end)) return;
    say("\"%.*s\" is left out, since it has no \"%s\"", PRINTED(row), end);
  }

  const char *path_;
  text_view text_;
  unsigned number_ = 0;
  bool is_clean_ = true;
};

// The whole file with its size; null, with errno, if it cannot be read.
malloc_ptr<char> read_file(const char *path, size_t &size) {
  const unique_file file{std::fopen(path, "re")};
  if (!file) return {};
  malloc_ptr<char> text{static_cast<char *>(std::malloc(max_file + 1))};
  if (!text) return {};
  size = std::fread(text.get(), 1, max_file + 1, file.get());
  const bool is_whole = std::ferror(file.get()) == 0 && size <= max_file;
  if (is_whole) return text;
  if (size > max_file) errno = EFBIG;
  size = 0;
  return {};
}

}  // namespace

exit_status check_description(const char *path) {
  size_t size = 0;
  const malloc_ptr<char> text = read_file(path, size);
  if (text) return inspection(path, {text.get(), size}).is_clean() ? done : failed;
  print_error("cannot read %s: %s", path, std::strerror(errno));
  return failed;
}

unsigned malformed_line(const char *path) {
  size_t size = 0;
  const malloc_ptr<char> text = read_file(path, size);
  unsigned number = 0;
  entry line;
  for (text_view rest(text.get(), size); !rest.empty();) {
    ++number;
    if (!take_line(rest, line)) return number;
  }
  return 0;
}

}  // namespace devfacts::tool
