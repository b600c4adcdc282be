// Faults at the boundary: in the copy of the library that the tests link, these stand between it and the C library.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace test {

// The n-th call (from 1) of that name from now on fails with this errno; "allocation" stands for malloc and its kin,
// "realloc" for that alone. An error of 0 makes getsockname succeed with no address.
void fail(const char *call, int nth, int error);

// To be asked at each call of that name: is this the one that fails?
bool strikes(const char *call);

// Calls of the name that fail() armed last, since then.
int calls_seen();

// Blocks that the library has allocated and not freed, and the size of the newest one.
long live_blocks();
size_t newest_size();

// The library's recvmsg gives these datagrams, one a call, before it asks the kernel again.
void receive_instead(const std::vector<std::string> &datagrams);

}  // namespace test
