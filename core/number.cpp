#include "core/number.h"

#include <cerrno>
#include <cstdlib>

namespace {

// A minus sign makes a negative number of an unsigned one, which is taken modulo 2^32; beyond that is the largest.
bool parse(const char *text, bool is_signed, uint32_t &number) {
  char *end = nullptr;
  errno = 0;
  const long long value = std::strtoll(text, &end, 10);
  const long long max = is_signed ? INT32_MAX : UINT32_MAX;
  const long long min = is_signed ? INT32_MIN : -max;
  const bool is_within = value >= min && value <= max;
  number = static_cast<uint32_t>(is_within ? value : is_signed && value < 0 ? min : max);
  return is_within && errno == 0 && end != text;
}

}  // namespace

bool devfacts::parse_number(const char *text, uint32_t &number) { return parse(text, false, number); }

bool devfacts::parse_number(const char *text, int32_t &number) {
  return parse(text, true, reinterpret_cast<uint32_t &>(number));
}
