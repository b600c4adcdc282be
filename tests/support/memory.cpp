#include "memory.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>

#include "faults.h"

static std::set<uintptr_t> live;
static size_t newest = 0;

// Upside down, so that a leak checker does not take it for a pointer.
static uintptr_t hidden(void *block) { return ~reinterpret_cast<uintptr_t>(block); }

long test::live_blocks() { return static_cast<long>(live.size()); }

size_t test::newest_size() { return newest; }

extern "C" {
void *test_realloc(void *block, size_t size) {
  const uintptr_t old = hidden(block);
  newest = size;
  void *made = test::strikes("allocation") ? nullptr : realloc(block, size);
  if (made == nullptr) return nullptr;
  live.erase(old);
  live.insert(hidden(made));
  return made;
}

void *test_malloc(size_t size) { return test_realloc(nullptr, size); }

void *test_calloc(size_t count, size_t size) {
  void *made = test_realloc(nullptr, count * size);
  return made == nullptr ? nullptr : std::memset(made, 0, count * size);
}

char *test_strndup(const char *text, size_t max) {
  const size_t length = strnlen(text, max);
  void *made = test_calloc(length + 1, 1);
  return static_cast<char *>(made == nullptr ? nullptr : std::memcpy(made, text, length));
}

char *test_strdup(const char *text) { return test_strndup(text, std::strlen(text)); }

void test::test_free(void *block) {
  live.erase(hidden(block));
  free(block);
}
}
