// Where the product description stands.
#pragma once

namespace devfacts {

inline constexpr char product_file[] = "/etc/product";

}  // namespace devfacts
