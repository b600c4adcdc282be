// The product's serial number, if there is one.
#pragma once

#include <cstdint>

namespace devfacts::tool {

// As read_serial_no(), which has zeros for a file that is not there; null then.
char *known_serial_no(char *buffer, uint32_t length);

}  // namespace devfacts::tool
