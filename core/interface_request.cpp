#include "core/interface_request.h"

#include <cstring>

namespace {

constexpr size_t name_size = 16;  // IFNAMSIZ; not included, as <net/if.h> and <linux/if.h> conflict

}  // namespace

void devfacts::prepare_request(void *request, size_t size, const char *name) {
  std::memset(request, 0, size);
  std::memcpy(request, name, strnlen(name, name_size));
}
