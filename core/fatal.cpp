#include <devfacts/core.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void die(const char *format, ...) {
  va_list values;
  va_start(values, format);
  std::vfprintf(stderr, format, values);
  va_end(values);
  std::exit(1);
}
