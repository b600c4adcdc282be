// Lines of keys and values: what comes is trimmed, begins with the prefix, and is the same through every way of asking.
#include <devfacts/core.h>

#include <cstring>
#include <string>

#include "input.h"

static bool is_trimmed(const std::string &text) {
  const char *blank = " \t\n\v\f\r";
  return text.empty() || (std::strchr(blank, text.front()) == nullptr && std::strchr(blank, text.back()) == nullptr);
}

static int append(void *values, char *key, char *value) {
  fuzz::require(is_trimmed(key) && is_trimmed(value) && std::strlen(key) + std::strlen(value) < 1023);
  *static_cast<std::string *>(values) += std::string(value) + "\n";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  const std::string input(fuzz::view(bytes, count)), prefix = input.substr(0, input.find('\n')).c_str();
  fuzz::set_files(input);
  std::string walked, collected;
  iterate("file", prefix.c_str(), append, &walked);
  keyval_list list;
  keyvalue("file", prefix.c_str(), &list);
  for (int i = 0; i < list.count; ++i) collected += std::string(list.rows[i].value, list.rows[i].length) + "\n";
  keyval_destroy(&list);
  fuzz::require(walked == collected);
  first_match_u32 number{};
  iterate("file", prefix.c_str(), __return_first_match_in_u32, &number);
  first_match_string text{};
  iterate("file", prefix.c_str(), __return_first_match_in_string, &text);
  fuzz::require(text.found == (walked.empty() ? 0 : 1) && number.found <= text.found);
  std::free(text.value);
  return 0;
}
