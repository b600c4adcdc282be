#include "core/text.h"

#include <devfacts/core.h>

#include <cstring>

using devfacts::is_space;

char *trimr_string(char *str) {
  for (char *end = str + std::strlen(str); end != str && is_space(end[-1]);) *--end = '\0';
  return str;
}

char *triml_string(const char *str) {
  while (is_space(*str)) ++str;
  return const_cast<char *>(str);
}
