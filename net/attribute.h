// What the collection asks of attributes beyond the public operations.
#pragma once

#include <devfacts/net.h>

namespace devfacts {

// nla_memdup() with at least that many bytes in the copy, those that the payload lacks zero.
void *nla_memdup_padded(const rtattr *attribute, size_t least);

// nla_memcpy() that stops at the payload's end.
void nla_copy(void *destination, const rtattr *attribute, size_t room);

}  // namespace devfacts
