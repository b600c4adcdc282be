// What the collection asks of attributes beyond the public operations.
#pragma once

#include <devfacts/net.h>

namespace devfacts {

// nla_memdup() with that many bytes or more in the copy: those that the payload lacks are zero.
void *nla_memdup_padded(const rtattr *attribute, size_t minimum);

// nla_memcpy() that stops at the payload's end.
void nla_copy(void *destination, const rtattr *attribute, size_t capacity);

}  // namespace devfacts
