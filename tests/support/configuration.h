// What the library asks of the configuration store.
#pragma once

#include <string>

namespace test {

// The calls since this was asked last, each as [operation key], in lines of at most 120 characters.
std::string asked();

}  // namespace test
