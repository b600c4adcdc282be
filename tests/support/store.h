// What the library asks of the configuration store: the real one answers, and every call is noted.
#pragma once

#include <string>

namespace test {

// The calls since this was asked last, a line each: the operation without its "cfg_" and what it was asked.
std::string asked();

}  // namespace test
