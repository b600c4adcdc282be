#include "core/text.h"

#include <devfacts/core.h>

#include <cstring>

using namespace devfacts;

char *trimr_string(char *str) {
  cut_space(str, str + std::strlen(str));
  return str;
}

char *triml_string(const char *str) {
  while (is_space(*str)) ++str;
  return const_cast<char *>(str);
}
