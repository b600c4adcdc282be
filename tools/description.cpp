#include "description.h"
namespace devfacts::tool {
exit_status check_description(const char *) { return done; }
}  // namespace devfacts::tool
