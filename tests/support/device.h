// A device of its own for a case: a fresh process, its root changed to a folder that holds just what the case wrote
// there.
#pragma once

#include <functional>
#include <string>

namespace test {

// As expect_clean(), with the root changed.
void on_device(const std::function<void()> &body);

// Puts a file in the place of whatever stood there; folders on the way are made.
void write_file(const std::string &path, const std::string &text);

}  // namespace test
