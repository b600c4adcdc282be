// A fresh process for each case: the library keeps state for as long as its process lives.
#pragma once

#include <functional>
#include <string>

namespace test {

struct outcome {
  std::string out, err;
  int status;  // exit status, or 128 and the signal

  std::string all() const { return out + "|" + err + "|" + std::to_string(status); }
};

// Runs the body in a forked child that ends by itself within a minute. Expectations that fail in the body give status
// 99, with their text in out.
outcome in_child(const std::function<void()> &body);

// The body runs to its end, every expectation in it holds, and on standard error it writes exactly these words.
void expect_clean(const std::function<void()> &body, const std::string &words = "");

// The body ends its process with status 1 and exactly these words.
void expect_death(const std::string &words, const std::function<void()> &body);

// What the shell command prints; the test fails where the command does.
std::string shell(const std::string &command);

// Under the user emulation the kernel's own link messages come through with their last empty attribute unswapped, which
// the attribute walk rightly warns of.
inline constexpr bool emulated = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

}  // namespace test
