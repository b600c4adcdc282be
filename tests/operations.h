// What the library does for its callers, as operations that print what came of them.
#pragma once

#include <functional>
#include <ostream>
#include <vector>

namespace test {

struct operation {
  const char *name;
  std::function<void()> prepare;  // what it needs to find
  std::function<void()> act;      // each of its calls fails in turn
  std::function<void()> look;     // at what it has left
  const char *twin = nullptr;     // the operation whose expected output this one must produce, too
};
inline void PrintTo(const operation &operation, std::ostream *stream) { *stream << operation.name; }

// They run on a device with the files of tests/data/device.
extern const std::vector<operation> operations;

}  // namespace test
