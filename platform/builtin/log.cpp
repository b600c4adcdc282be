// Stands in for the device's logging library.
#include "platform/log.h"

#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

int priority_of(int level) { return std::clamp(level, 0, LOG_DEBUG - LOG_CRIT) + LOG_CRIT; }

// The line is the format for syslog, around the message.
void write(int level, const char *line, const char *format, va_list values) {
  const int cause = errno;
  char text[1024] = "";
  std::vsnprintf(text, sizeof text, format, values);
  const size_t length = std::strlen(text);
  if (length > 0 && text[length - 1] == '\n') text[length - 1] = '\0';
  errno = cause;
  syslog(priority_of(level), line, text);
}

}  // namespace

void log_message(int level, const char *format, ...) {
  va_list values;
  va_start(values, format);
  write(level, "%s", format, values);
  va_end(values);
}

void log_message_errno(int level, const char *format, ...) {
  va_list values;
  va_start(values, format);
  write(level, "%s: %m", format, values);
  va_end(values);
}
