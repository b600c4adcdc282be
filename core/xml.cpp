#include <devfacts/core.h>

#include <cstdio>

#include "core/owner.h"
#include "core/print_buffer.h"

using namespace devfacts;

namespace {

constexpr const char *absent = "N/A";

bool is_empty(const char *text) { return text == nullptr || *text == '\0'; }

}  // namespace

void xml_str_item(const char *name, const char *value) {
  if (name != nullptr) print_item(name, is_empty(value) ? absent : value);
}

void xml_str_esc_item(const char *name, const char *value) {
  if (is_empty(value)) return xml_str_item(name, nullptr);
  const malloc_ptr<char> text{escape_xml(value, nullptr)};
  xml_str_item(name, text.get());
}

void xml_int_item(const char *name, int32_t value) {
  const auto magnitude = static_cast<uint32_t>(value);
  print_item(name, value < 0 ? 0 - magnitude : magnitude, value < 0);
}

void xml_int_item_opt(const char *name, int32_t value, uint8_t present) {
  if (present != 0) return xml_int_item(name, value);
  xml_str_item(name, nullptr);
}

void xml_int64_item(const char *name, int64_t value) {
  std::printf("  <%s>%lld</%s>\n", name, static_cast<long long>(value), name);
}

void xml_double_item(const char *name, double value) { std::printf("  <%s>%f</%s>\n", name, value, name); }
