// Processes of their own, and the device that a case runs on.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bytes.h"

namespace test {

// How a process ended: what it wrote, and its exit status, or 128 and the signal's number.
struct ending {
  std::string out;
  std::string err;
  int status = 0;
  bool operator==(const ending &) const = default;
};
void PrintTo(const ending &end, std::ostream *stream);

// Runs the body in a child, because the library keeps state as long as its process lives. The child ends within a
// minute. An expectation that fails in the body makes the status 99; its text is in out.
ending run(const std::function<void()> &body);

// The same on a device of its own: the root directory holds only the files that the body writes.
ending run_on_device(const std::function<void()> &body);

// The usual case: the body runs on a device, writes this and succeeds.
void on_device(const std::function<void()> &body, const std::string &out = "", const std::string &err = "");

// Ends a body at once: without /proc the leak checker cannot look. The cases count the library's blocks themselves.
[[noreturn]] void leave();

// A timer interrupts every call that waits, again and again.
void interrupt_every(int microseconds);

// Leaves one free descriptor that fits into an fd_set; all others are beyond it.
void use_up_descriptors();

// Files: one that replaces whatever has its path; the contents of one, whose relative name is that of a file in
// tests/data; all below a directory, each with its path as seen from there.
void write_file(const std::string &path, const std::string &text);
std::string read_file(const std::string &path);
std::map<std::string, std::string> files_below(const std::string &directory);

}  // namespace test
