// Each call that an operation makes over the library's boundary fails once, in each way that it can. What it prints
// and leaves then is compared with a run without a fault: tests/data/sweep/OPERATION has a line for each outcome.
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <regex>
#include <set>
#include <sstream>
#include <utility>

#include "operations.h"
#include "support/faults.h"
#include "support/process.h"

using namespace test;

namespace {

struct fault {
  const char *name;
  int error;
  const char *calls;
};
constexpr fault fault_table[] = {
    {"ENOMEM", ENOMEM, ""},
    {"EINTR", EINTR, "connect select poll send recv recvmsg read pread posix_fallocate"},
    {"EAGAIN", EAGAIN, "send recv recvmsg"},
    {"ENOSPC", ENOSPC, "posix_fallocate"},
    {"none", 0, "select poll send recv recvmsg read pread getsockname"},
};

struct outcome {
  ending end;
  long blocks = 0;
  long descriptors = 0;
};

// A non-blocking descriptor counts as eleven.
long open_descriptors() {
  long count = 0;
  for (int fd = 0; fd < FD_SETSIZE + 9; ++fd) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags >= 0) count += (flags & O_NONBLOCK) != 0 ? 11 : 1;
  }
  return count;
}

// The n-th call fails, or with 0 none. The calls and what remains at the end are left in files.
outcome run_with_fault(const operation &operation, const fault &fault, int nth) {
  write_file("/remains", "0 0");
  outcome result;
  result.end = run([&] {
    close(STDIN_FILENO);  // number 0 is free, and counts as open
    write_file("/etc/product", read_file("/product"));
    if (operation.prepare) operation.prepare();
    const long before = open_descriptors();
    fail(fault.calls, nth, fault.error);
    operation.act();
    if (nth == 0) write_file("/calls", calls_seen());
    fail("none", 0, 0);
    if (operation.look) operation.look();
    prod_spec_close();
    sysconf_close();
    eeprom_free();
    const long descriptors = open_descriptors() - before;
    std::ofstream("/remains") << live_blocks() << " " << descriptors;
    leave();
  });
  std::ifstream("/remains") >> result.blocks >> result.descriptors;
  return result;
}

// The lines of a text beyond those that the other text has, too.
std::vector<std::string> more_lines(const std::string &text, const std::string &other) {
  std::istringstream stream(text);
  std::istringstream other_stream(other);
  std::multiset<std::string> remaining;
  std::vector<std::string> more;
  for (std::string line; std::getline(other_stream, line);) remaining.insert(line);
  for (std::string line; std::getline(stream, line);) {
    if (remaining.extract(line).empty()) more.push_back(line);
  }
  return more;
}

std::string difference(const outcome &whole, const outcome &faulty) {
  const auto lost = more_lines(whole.end.out + whole.end.err, faulty.end.out + faulty.end.err);
  const auto made = more_lines(faulty.end.out + faulty.end.err, whole.end.out + whole.end.err);
  const std::pair<long, const char *> changes[] = {{-static_cast<long>(lost.size()), ""},
                                                   {static_cast<long>(made.size()), ""},
                                                   {faulty.blocks - whole.blocks, " blocks"},
                                                   {faulty.descriptors - whole.descriptors, " descriptors"}};
  std::ostringstream text;
  for (const auto &[number, what] : changes) {
    if (number != 0) text << " " << std::showpos << number << std::noshowpos << what;
  }
  if (faulty.end.status != whole.end.status) text << " status " << faulty.end.status;
  for (size_t i = 0; i < made.size() && i < 2; ++i) {
    const size_t start = std::min(made[i].find_first_not_of(' '), made[i].size());
    text << " | " << made[i].substr(start, 50);
  }
  return text.str().empty() ? " no difference" : text.str();
}

// Consecutive faults of one outcome share a line, in which a call that is repeated is "CALL xN".
void print_faults(const operation &operation, const fault &fault) {
  const outcome whole = run_with_fault(operation, fault, 0);
  std::ifstream calls("/calls");
  std::vector<std::pair<std::string, std::string>> faults;  // the call, the difference
  for (std::string call; calls >> call;) {
    faults.emplace_back(call, difference(whole, run_with_fault(operation, fault, static_cast<int>(faults.size()) + 1)));
  }
  for (auto at = faults.begin(); at != faults.end();) {
    const std::string &outcome = at->second;
    std::cout << fault.name;
    while (at != faults.end() && at->second == outcome) {
      const auto first = at;
      at = std::find_if(at, faults.end(), [&](const auto &each) { return each != *first; });
      std::cout << " " << first->first;
      if (at - first > 1) std::cout << " x" << at - first;
    }
    std::cout << ":" << outcome << "\n";
  }
}

void print_sweep(const operation &operation) {
  const outcome whole = run_with_fault(operation, fault_table[0], 0);
  std::cout << whole.end.out << "-- errors\n" << whole.end.err << "-- status " << whole.end.status << ", ";
  std::cout << whole.blocks << " blocks and " << whole.descriptors << " descriptors remain\n";
  for (const fault &each : fault_table) print_faults(operation, each);
}

class sweep : public testing::TestWithParam<operation> {};

TEST_P(sweep, faults) {
  const operation &operation = GetParam();
  const std::string path = "sweep/" + std::string(operation.twin == nullptr ? operation.name : operation.twin);
  const auto files = files_below("device");
  const ending end = run_on_device([&] {
    for (const auto &[path, text] : files) write_file(path, text);
    write_file("/var/cfg/other", "");
    print_sweep(operation);
  });
  if (std::getenv("ACCEPT_SWEEP") != nullptr && operation.twin == nullptr) write_file(path, end.out);
  const std::string twin_of_poll = std::regex_replace(end.out, std::regex("\\bpoll\\b"), "select");
  EXPECT_EQ((ending{twin_of_poll, end.err, end.status}), (ending{read_file(path), "", 0}));
}

INSTANTIATE_TEST_SUITE_P(each, sweep, testing::ValuesIn(operations),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace
