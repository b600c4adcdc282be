// Each call that an operation makes over the library's boundary fails once in turn, in each way that it can.
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "operations.h"
#include "support/test.h"

using namespace test;

// A non-blocking one counts as eleven.
static int open_descriptors() {
  int count = 0;
  for (int fd = 0, flags = 0; fd < FD_SETSIZE + 9; ++fd)
    if ((flags = fcntl(fd, F_GETFL)) >= 0) count += (flags & O_NONBLOCK) != 0 ? 11 : 1;
  return count;
}

// The lines of the text beyond those that the other one has, too.
static std::string more_lines(const std::string &text, const std::string &other, char mark) {
  constexpr int most_shown = 6;
  std::istringstream lines(text), other_lines(other);
  std::multiset<std::string> left;
  std::string found;
  int count = 0;
  for (std::string line; std::getline(other_lines, line);) left.insert(line);
  for (std::string line; std::getline(lines, line);) {
    if (const auto at = left.find(line); at != left.end()) {
      left.erase(at);
    } else if (++count <= most_shown) {
      found += mark + line + "\n";
    }
  }
  return count > most_shown ? found + mark + " and " + std::to_string(count - most_shown) + " more\n" : found;
}

struct fault {
  int error;
  const char *calls;
};

constexpr fault faults_of_calls[] = {
    {ENOMEM, ""},
    {EINTR, "connect select poll send recv recvmsg read pread posix_fallocate"},
    {EAGAIN, "send recv recvmsg"},
    {ENOSPC, "posix_fallocate"},
    {0, "select poll send recv recvmsg read pread getsockname"},
};

// What an operation prints and leaves when the n-th of its calls fails; with 0 none does, and the calls are noted.
static std::string outcome(const operation &operation, const fault &fault, int nth) {
  return run([&] {
    close(STDIN_FILENO);  // number 0 is free, and counts as open
    write_file("/etc/product", data("/product"));
    if (operation.prepare) operation.prepare();
    const int before = open_descriptors();
    fail(fault.calls, nth, fault.error), operation.ask();
    if (nth == 0) write_file("/calls", calls_seen());
    fail("none", 0, 0);
    if (operation.rest) operation.rest();
    prod_spec_close(), sysconf_close(), eeprom_free();
    std::cout << live_blocks() << " blocks and " << open_descriptors() - before << " descriptors remain\n";
    leave();
  });
}

// Faults that cost the same are told together.
static void sweep(const operation &operation, const fault &fault) {
  const std::string whole = outcome(operation, fault, 0);
  if (fault.error == ENOMEM) std::cout << whole << "\n";
  std::ifstream calls("/calls");
  std::string name, faults, last;
  const auto tell = [&] { std::cout << "-- " << strerrorname_np(fault.error) << ":" << faults << "\n" << last; };
  for (int nth = 1; calls >> name; ++nth) {
    const std::string end = outcome(operation, fault, nth);
    const std::string cost = more_lines(whole, end, '-') + more_lines(end, whole, '+');
    if (nth > 1 && cost != last) tell(), faults.clear();
    faults.append(" ").append(std::to_string(nth)).append(".").append(name), last = cost;
  }
  if (!faults.empty()) tell();
}

class faults : public testing::TestWithParam<operation> {};

// What the operation does, and what is different with each fault.
TEST_P(faults, cost_what_they_must) {
  std::vector<std::pair<std::string, std::string>> files = {{"/product", data("product")},
                                                            {"/radios", data("radios")},
                                                            {"/proc/net/ra0/peers", data("peers")},
                                                            {"/po/de/c.po", data("catalogue.po")}};
  for (const auto &row : rows("device")) files.emplace_back(row[0], row[1]);
  const auto body = [&] {
    mkdir("/var", 0755), mkdir("/var/cfg", 0755);
    for (const auto &[path, text] : files) write_file(path, text);
    for (const fault &each : faults_of_calls) sweep(GetParam(), each);
  };
  on_device(body, data(std::string("faults.") + GetParam().name) + "||0");
}

INSTANTIATE_TEST_SUITE_P(each, faults, testing::ValuesIn(operations),
                         [](const auto &info) { return std::string(info.param.name); });
