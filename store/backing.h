// The place where the image is kept: a flash partition, or else a file.
#pragma once

#include "core/owner.h"

namespace devfacts {

// The store, for reading and writing; empty if there is none.
unique_fd open_store();

}  // namespace devfacts
