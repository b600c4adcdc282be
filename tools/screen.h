// Plain text for people: 80 columns, colour on terminals that want it, bars, and numbers in short.
#pragma once

#include <devfacts/core.h>

#include <cstddef>
#include <cstdint>

namespace devfacts::tool {

enum class colour : uint8_t { none, bold, green, yellow, red };

// Begins a colour, or ends the one before; nothing if standard output is no terminal or NO_COLOR is set.
void paint(colour wanted);

// A line in bold.
void print_heading(const char *text);

// A text in a column of that width; if it does not fit it has a line of its own.
void print_column(const char *text, size_t width);

// Texts side by side below a column of that width, on as many lines as they need.
class side_by_side {
 public:
  explicit side_by_side(size_t indent) : indent_(indent) {}
  ~side_by_side();
  side_by_side(const side_by_side &) = delete;
  side_by_side &operator=(const side_by_side &) = delete;

  DEVFACTS_PRINTF(2, 3) void add(const char *format, ...);

 private:
  size_t indent_;
  size_t used_ = 0;  // columns of the line; 0 before the first
};

// A strength in dBm as a bar with the number after it.
void print_signal(int dbm);

// A number with a unit and one decimal, "446.4 MB", in eleven columns; a dash for what is not known.
void print_amount(double value, const char *unit);

// How much a counter of 32 bits has grown a second since the last call for the same row and kind; no number at the
// first.
double rate_of(const char *row, char kind, uint32_t counter);

}  // namespace devfacts::tool
