// White space as the C locale knows it, whatever locale the program has set.
#pragma once

namespace devfacts {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace devfacts
