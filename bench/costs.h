// What a piece of work asks of the allocator and of the kernel.
#pragma once

#include <cstddef>

namespace bench {

struct costs {
  size_t allocations;
  size_t bytes;
  size_t system_calls;
};

// Runs the work once here, and once in a child that is traced.
costs costs_of(void (*work)());

}  // namespace bench
