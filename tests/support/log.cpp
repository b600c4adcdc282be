#include "log.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

static std::string messages;

// The library's call of NAME is test_NAME. A message has at most one value, a text.
extern "C" {
void test_log_message(int level, const char *format, const char *value) {
  char text[300];
  std::snprintf(text, sizeof text, format, value);
  messages += std::to_string(level) + " " + text;
}

void test_log_message_errno(int level, const char *format, const char *value) {
  messages += std::string(strerrorname_np(errno)) + " ";
  test_log_message(level, format, value);
}
}

std::string test::logged() { return std::exchange(messages, ""); }
