// Decimal numbers of 32 bits, as strtoul and strtol read them if a long has 32 bits, on a wider machine, too.
#pragma once

#include <cstdint>

namespace devfacts {

// Stores the number at the start of the text: 0 without a number, the limit if it is out of range. True if it is a
// number in range, whatever follows it.
bool parse_number(const char *text, uint32_t &number);
bool parse_number(const char *text, int32_t &number);

}  // namespace devfacts
