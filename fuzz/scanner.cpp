// Lines of keys and values: what comes is trimmed, and is the same through every way of asking.
#include <devfacts/core.h>

#include <cstring>

#include "input.h"

static int append(void *values, char *key, char *value) {
  for (const std::string text : {key, value}) {
    const char *blank = " \t\n\v\f\r";
    fuzz::require(text.find_first_of(blank) != 0);
    fuzz::require(text.empty() || text.find_last_of(blank) != text.size() - 1);
  }
  *static_cast<std::string *>(values) += std::string(value) + "\n";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  const std::string path = fuzz::file_with(fuzz::view(bytes, count));
  const std::string prefix(fuzz::view(bytes, std::min<size_t>(count, 1)));
  std::string walked;
  iterate(path.c_str(), prefix.c_str(), append, &walked);
  std::string collected;
  keyval_list list;
  keyvalue(path.c_str(), prefix.c_str(), &list);
  for (int i = 0; i < list.count; ++i) collected += std::string(list.rows[i].value, list.rows[i].length) + "\n";
  keyval_destroy(&list);
  fuzz::require(walked == collected);
  first_match_u32 number{};
  iterate(path.c_str(), prefix.c_str(), __return_first_match_in_u32, &number);
  fuzz::require(number.found == 0 || !walked.empty());
  return 0;
}
