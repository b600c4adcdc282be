#include "net/attribute.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static_assert(sizeof(rtattr) == 4);

namespace {

constexpr int header_size = sizeof(rtattr);

// An attribute shorter than its header has no payload.
size_t payload_size(const rtattr *attribute) { return static_cast<size_t>(std::max(nla_length(attribute), 0)); }

rtattr *next_attribute(rtattr *attribute, int step) {
  return reinterpret_cast<rtattr *>(reinterpret_cast<char *>(attribute) + step);
}

// The length at the end of the walk, if it is within the block.
int claimed_length(const rtattr *attribute, int length) {
  return length >= static_cast<int>(sizeof attribute->rta_len) ? attribute->rta_len : 0;
}

}  // namespace

int nl_parse_rtattr(rtattr **table, int max, rtattr *first, int length) {
  std::fill_n(table, max + 1, nullptr);
  rtattr *attribute = first;
  while (length >= header_size && attribute->rta_len >= header_size && attribute->rta_len <= length) {
    if (attribute->rta_type <= max) table[attribute->rta_type] = attribute;
    const int step = RTA_ALIGN(attribute->rta_len);
    length -= step;
    attribute = next_attribute(attribute, step);
  }
  if (length != 0) {
    std::fprintf(stderr, "!!!Deficit %d, rta_len=%d\n", length, claimed_length(attribute, length));
  }
  return 0;
}

void *nla_data(const rtattr *attribute) {
  return const_cast<char *>(reinterpret_cast<const char *>(attribute)) + header_size;
}

int nla_length(const rtattr *attribute) { return attribute->rta_len - header_size; }

void *nla_memcpy(void *destination, const rtattr *attribute, size_t count) {
  return std::memcpy(destination, nla_data(attribute), count);
}

void devfacts::nla_copy(void *destination, const rtattr *attribute, size_t capacity) {
  nla_memcpy(destination, attribute, std::min(capacity, payload_size(attribute)));
}

void *devfacts::nla_memdup_padded(const rtattr *attribute, size_t minimum) {
  const size_t size = payload_size(attribute);
  if (size == 0) return nullptr;
  const size_t capacity = std::max(size, minimum) + 1;
  auto *copy = static_cast<char *>(std::malloc(capacity));
  if (copy == nullptr) return nullptr;
  std::memset(copy + size, 0, capacity - size);
  return nla_memcpy(copy, attribute, size);
}

void *nla_memdup(const rtattr *attribute) { return devfacts::nla_memdup_padded(attribute, 0); }

char *nla_strdup(const rtattr *attribute) {
  return strndup(static_cast<const char *>(nla_data(attribute)), payload_size(attribute));
}

uint32_t nla_get_u32(const rtattr *attribute) {
  uint32_t word = 0;
  devfacts::nla_copy(&word, attribute, sizeof word);
  return word;
}
