#include <devfacts/core.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "core/owner.h"

namespace {

constexpr const char *absent = "N/A";

struct entity {
  char byte;
  char text[7];  // in place: no relocation
};

constexpr entity entities[] = {
    {'\'', "&apos;"}, {'"', "&quot;"}, {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"},
};

// What stands for the byte in XML.
std::string_view escaped(const char &byte) {
  for (const entity &candidate : entities) {
    if (candidate.byte == byte) return candidate.text;
  }
  return {&byte, 1};
}

// The bytes that the escaped text needs with its NUL; 0 when a size cannot hold that many.
size_t escaped_size(const char *src) {
  size_t size = 1;
  for (; *src != '\0'; ++src) {
    if (__builtin_add_overflow(size, escaped(*src).size(), &size)) return 0;
  }
  return size;
}

bool is_empty(const char *text) { return text == nullptr || *text == '\0'; }

}  // namespace

char *escape_xml(const char *src, char *dst) {
  if (dst == nullptr) {
    const size_t size = escaped_size(src);
    if (size != 0) dst = static_cast<char *>(std::malloc(size));
    if (dst == nullptr) return nullptr;
  }
  char *end = dst;
  for (; *src != '\0'; ++src) {
    const std::string_view text = escaped(*src);
    end = static_cast<char *>(mempcpy(end, text.data(), text.size()));
  }
  *end = '\0';
  return dst;
}

void xml_str_item(const char *name, const char *value) {
  if (name == nullptr) return;
  std::printf("  <%s>%s</%s>\n", name, is_empty(value) ? absent : value, name);
}

void xml_str_esc_item(const char *name, const char *value) {
  if (is_empty(value)) return xml_str_item(name, nullptr);
  const devfacts::malloc_ptr<char> text{escape_xml(value, nullptr)};
  xml_str_item(name, text.get());
}

void xml_int_item(const char *name, int32_t value) { std::printf("  <%s>%d</%s>\n", name, value, name); }

void xml_int_item_opt(const char *name, int32_t value, uint8_t present) {
  if (present != 0) return xml_int_item(name, value);
  xml_str_item(name, nullptr);
}

void xml_int64_item(const char *name, int64_t value) {
  std::printf("  <%s>%lld</%s>\n", name, static_cast<long long>(value), name);
}

void xml_double_item(const char *name, double value) { std::printf("  <%s>%f</%s>\n", name, value, name); }
