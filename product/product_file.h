// The path of the product description.
#pragma once

namespace devfacts {

inline constexpr char product_file[] = "/etc/product";

}  // namespace devfacts
