// The library's blocks, counted.
#pragma once

#include <cstddef>

namespace test {

// Frees a block that the library handed over.
extern "C" void test_free(void *block);

// Blocks that the library has allocated and not freed, and the size of the newest one.
long live_blocks();
size_t newest_size();

}  // namespace test
