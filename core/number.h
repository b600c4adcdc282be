// Decimal numbers of 32 bits, as strtoul and strtol read them where a long has 32 bits, on a wider machine too.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace devfacts {

// A negative number that a minus sign makes of a 32-bit one is taken modulo 2^32; beyond the limits is the largest.
inline uint32_t cut(long long number, uint32_t /*type*/) {
  constexpr long long most = UINT32_MAX;
  if (number >= -most && number <= most) return static_cast<uint32_t>(number);
  errno = ERANGE;
  return UINT32_MAX;
}

inline int32_t cut(long long number, int32_t /*type*/) {
  if (number >= INT32_MIN && number <= INT32_MAX) return static_cast<int32_t>(number);
  errno = ERANGE;
  return number < 0 ? INT32_MIN : INT32_MAX;
}

// Stores the number at the start of the text, 0 where there is none, the limit where it is beyond it. Only a true
// number within the limits gives true; what stands behind it does not matter.
template <class Number>
bool parse_number(const char *text, Number &number) {
  char *end = nullptr;
  errno = 0;
  number = cut(std::strtoll(text, &end, 10), Number{});
  return errno == 0 && end != text;
}

}  // namespace devfacts
