// Decimal numbers of 32 bits, as strtoul and strtol read them where a long has 32 bits, on a wider machine too.
#pragma once

#include <cstdint>

namespace devfacts {

// Each stores the number at the start of the text, 0 where there is none, the limit where it is beyond it. Only a true
// number within the limits gives true; what stands behind it does not matter.
bool parse_number(const char *text, uint32_t &number);
bool parse_number(const char *text, int32_t &number);

}  // namespace devfacts
