#include "core/number.h"

#include <cerrno>
#include <cstdlib>

namespace {

// As strtoul: a minus sign negates a number modulo 2^32, and out of range is the maximum.
uint32_t cut(long long number, uint32_t /*type*/) {
  constexpr long long max = UINT32_MAX;
  if (number >= -max && number <= max) return static_cast<uint32_t>(number);
  errno = ERANGE;
  return UINT32_MAX;
}

int32_t cut(long long number, int32_t /*type*/) {
  if (number >= INT32_MIN && number <= INT32_MAX) return static_cast<int32_t>(number);
  errno = ERANGE;
  return number < 0 ? INT32_MIN : INT32_MAX;
}

template <class Number>
bool parse(const char *text, Number &number) {
  char *end = nullptr;
  errno = 0;
  number = cut(std::strtoll(text, &end, 10), Number{});
  return errno == 0 && end != text;
}

}  // namespace

bool devfacts::parse_number(const char *text, uint32_t &number) { return parse(text, number); }

bool devfacts::parse_number(const char *text, int32_t &number) { return parse(text, number); }
