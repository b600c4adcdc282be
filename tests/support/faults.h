// Faults at the library's boundary: in the copy of the library that the tests link, its calls of the system come here.
#pragma once

#include <string>

namespace test {

// From now on the n-th of these calls (from 1) fails with this errno: of all calls, or of those whose names are in the
// text, where "allocation" is malloc and its kin. An error of 0 makes the call return 0: a timeout of select, an end of
// file, a datagram without bytes, an address without length.
void fail(const std::string &calls, int nth, int error);

// Is it this call's turn to fail? The calls since fail(), each followed by a blank.
bool strikes(const std::string &call);
std::string calls_seen();

// What a failing call returns.
int failed_result();

// Frees a block that the library handed over; its blocks that are not freed; the size of the newest one.
extern "C" void test_free(void *block);
long live_blocks();
size_t newest_size();

// Files look like those of /proc: their size is 0, and one read returns at most this many bytes.
void read_at_most(size_t count);

}  // namespace test
