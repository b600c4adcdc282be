#include "screen.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include "text.h"

namespace devfacts::tool {
namespace {

constexpr size_t screen_width = 80;
constexpr size_t gap = 2;

constexpr int bar_width = 20;
constexpr int weakest = -100;
constexpr int strongest = -40;
constexpr int good_signal = -67;
constexpr int fair_signal = -78;

bool has_colours() {
  const char *const refused = std::getenv("NO_COLOR");
  const char *const terminal = std::getenv("TERM");
  const bool is_dumb = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
  return isatty(STDOUT_FILENO) != 0 && !is_dumb && (refused == nullptr || *refused == '\0');
}

// Prints as much of a text as those columns hold; returns how many it takes.
size_t print_within(std::string_view text, size_t columns) {
  size_t used = 0;
  while (!text.empty()) {
    const std::string_view each = leading(text, first_character(text).size);
    const size_t width = visible_width(each);
    if (used + width > columns) break;
    print_visible(stdout, each);
    used += width;
    text.remove_prefix(each.size());
  }
  return used;
}

void pad(size_t columns) { std::printf("%*s", static_cast<int>(columns), ""); }

// The counters of the last reading, in the order in which they are asked for.
struct reading {
  char row[16];
  char kind;
  uint32_t counter;
  double time;
};
reading *readings;
size_t reading_count;
size_t next_reading;

double seconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

reading *find_reading(const char *row, char kind) {
  for (size_t i = 0; i < reading_count; ++i) {
    reading &each = readings[(next_reading + i) % reading_count];
    if (each.kind != kind || std::strncmp(each.row, row, sizeof each.row) != 0) continue;
    next_reading += i + 1;
    return &each;
  }
  return nullptr;
}

reading *add_reading(const char *row, char kind) {
  auto *grown = static_cast<reading *>(std::realloc(readings, (reading_count + 1) * sizeof(reading)));
  if (grown == nullptr) return nullptr;
  readings = grown;
  reading &added = readings[reading_count++];
  added = {{}, kind, 0, std::numeric_limits<double>::quiet_NaN()};
  std::memcpy(added.row, row, strnlen(row, sizeof added.row));
  return &added;
}

}  // namespace

void paint(colour wanted) {
  constexpr char codes[][6] = {"\033[0m", "\033[1m", "\033[32m", "\033[33m", "\033[31m"};
  if (has_colours()) std::fputs(codes[static_cast<size_t>(wanted)], stdout);
}

void print_heading(const char *text) {
  paint(colour::bold);
  print_within(text, screen_width);
  paint(colour::none);
  std::putchar('\n');
}

void print_column(const char *text, size_t width) {
  size_t used = print_within(text, screen_width);
  if (used >= width) {
    std::putchar('\n');
    used = 0;
  }
  pad(width - used);
}

void side_by_side::add(const char *format, ...) {
  char text[256];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  const size_t width = std::min(visible_width(text), screen_width - indent_);
  if (used_ != 0 && used_ + gap + width > screen_width) {
    std::putchar('\n');
    used_ = 0;
  }
  pad(used_ == 0 ? indent_ : gap);
  used_ += (used_ == 0 ? indent_ : gap) + width;
  print_within(text, width);
}

side_by_side::~side_by_side() {
  if (used_ != 0) std::putchar('\n');
}

void print_signal(int dbm) {
  const int filled = std::clamp((dbm - weakest) * bar_width / (strongest - weakest), 0, bar_width);
  paint(dbm >= good_signal ? colour::green : dbm >= fair_signal ? colour::yellow : colour::red);
  for (int i = 0; i < filled; ++i) std::putchar('#');
  paint(colour::none);
  for (int i = filled; i < bar_width; ++i) std::putchar('.');
  std::printf(" %4d dBm", dbm);
}

void print_amount(double value, const char *unit) {
  constexpr char prefixes[][2] = {"", "k", "M", "G", "T"};
  if (!std::isfinite(value)) {
    std::printf("%11s", "-");
    return;
  }
  size_t prefix = 0;
  for (; value >= 1000 && prefix < 4; ++prefix) value /= 1000;
  char text[32];
  std::snprintf(text, sizeof text, "%.*f %s%s", prefix == 0 ? 0 : 1, value, prefixes[prefix], unit);
  std::printf("%11s", text);
}

double rate_of(const char *row, char kind, uint32_t counter) {
  reading *last = find_reading(row, kind);
  if (last == nullptr) last = add_reading(row, kind);
  const double now = seconds();
  if (last == nullptr) return std::numeric_limits<double>::quiet_NaN();
  const double rate = (counter - last->counter) / (now - last->time);
  last->counter = counter;
  last->time = now;
  return rate;
}

}  // namespace devfacts::tool
