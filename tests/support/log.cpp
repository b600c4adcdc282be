#include "platform/log.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include "test.h"

static std::string messages;

// The library's undefined name x is test_x here. A message has one value in it at most, a text.
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
