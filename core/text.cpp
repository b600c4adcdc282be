#include "core/text.h"

#include <devfacts/core.h>

#include <cstring>

using namespace devfacts;

char *trimr_string(char *str) {
  cut_space(str, str + std::strlen(str));
  return str;
}

char *triml_string(const char *str) { return const_cast<char *>(skip_space(str)); }
