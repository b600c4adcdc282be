// What the library does for its callers, as operations that print what came of them.
#pragma once

#include <functional>
#include <ostream>
#include <vector>

namespace test {

struct operation {
  const char *name;
  std::function<void()> prepare;  // what it needs to find
  std::function<void()> ask;      // what counts
  std::function<void()> rest;     // a look at what it has left
};

inline void PrintTo(const operation &operation, std::ostream *out) { *out << operation.name; }

// On the device of data/device, with the description in /product, another one in /radios, and data/peers.
extern const std::vector<operation> operations;

}  // namespace test
