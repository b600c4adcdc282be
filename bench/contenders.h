// What is measured: ways to collect the interfaces, and ways to print them.
#pragma once

#include <span>

namespace bench {

using work = void (*)();

struct contender {
  const char *name;
  work run;
};

std::span<const contender> collectors();

// These print on stdout the list that ifi_get_all_ip() filled, and flush it.
std::span<const contender> printers();

// The same text as those of our own, or the comparison is worth nothing.
void check_that_all_agree();

}  // namespace bench
