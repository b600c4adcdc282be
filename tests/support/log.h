// What the library logs.
#pragma once

#include <string>

namespace test {

// The messages since this was asked last: for each the errno's name if it is told, the level and the text.
std::string logged();

}  // namespace test
