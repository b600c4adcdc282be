// The place of the image: a flash partition, or else a file.
#pragma once

#include "core/owner.h"

namespace devfacts {

// The store, for reading and writing; empty if it cannot be opened.
unique_fd open_store();

}  // namespace devfacts
