#include "document.h"

#include <devfacts/net.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "text.h"

namespace devfacts::tool {
namespace {

constexpr char replacement[] = "\xef\xbf\xbd";  // U+FFFD

// Characters that a text in XML or in JSON does not hold as they are.
constexpr struct {
  char character;
  char xml[7];
  char json[3];
} escapes[] = {
    {'\'', "&apos;", "'"}, {'"', "&quot;", "\\\""}, {'&', "&amp;", "&"},    {'<', "&lt;", "<"},     {'>', "&gt;", ">"},
    {'\\', "\\", "\\\\"},  {'\t', "&#9;", "\\t"},   {'\n', "&#10;", "\\n"}, {'\r', "&#13;", "\\r"},
};

// XML cannot hold them, and a control character is not for a terminal.
bool is_replaced(const character &each) {
  return each.code == character::invalid || each.code == 0xfffe || each.code == 0xffff || each.is_control();
}

}  // namespace

document::document(form wanted, const char *name, absence absent) : form_(wanted), absence_(absent), root_(name) {
  if (is_json()) {
    std::putchar('{');
  } else {
    std::printf("<%s>\n", root_);
  }
}

document::~document() {
  if (is_json()) {
    std::puts("}");
  } else {
    std::printf("</%s>\n", root_);
  }
}

// What comes before a field, a list or a group in JSON: a comma, and the name outside a list.
void document::begin_part(const char *name) {
  if (!first_) std::putchar(',');
  first_ = false;
  const bool is_in_list = (lists_ >> depth_ & 1) != 0;
  if (!is_in_list) std::printf("\"%s\":", name);
}

void document::begin_parts(bool is_list) {
  std::putchar(is_list ? '[' : '{');
  first_ = true;
  ++depth_;
  lists_ = (lists_ & ~(1U << depth_)) | (is_list ? 1U : 0U) << depth_;
}

void document::end_parts() {
  std::putchar((lists_ >> depth_ & 1) != 0 ? ']' : '}');
  first_ = false;
  --depth_;
}

void document::begin_field(const char *name) {
  if (is_json()) {
    begin_part(name);
  } else {
    std::printf("  <%s>", name);
  }
}

void document::end_field(const char *name) {
  if (!is_json()) std::printf("</%s>\n", name);
}

void document::no_field(const char *name) {
  if (!is_json() && absence_ == absence::leaves_out) return;
  begin_field(name);
  std::fputs(is_json() ? "null" : "N/A", stdout);
  end_field(name);
}

void document::print_character(std::string_view bytes) {
  for (const auto &each : escapes) {
    if (bytes[0] != each.character) continue;
    std::fputs(is_json() ? each.json : each.xml, stdout);
    return;
  }
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void document::print_text(std::string_view text) {
  while (!text.empty()) {
    const std::string_view rest = text;
    const character each = take_character(text);
    const bool is_space = each.code == '\t' || each.code == '\n' || each.code == '\r';
    if (is_replaced(each) && !is_space) {
      std::fputs(replacement, stdout);
    } else {
      print_character(leading(rest, each.size));
    }
  }
}

void document::text(const char *name, const char *value) {
  if (value == nullptr || (*value == '\0' && !is_json())) return no_field(name);
  text(name, std::string_view(value));
}

void document::text(const char *name, std::string_view value) {
  begin_field(name);
  if (is_json()) std::putchar('"');
  print_text(value);
  if (is_json()) std::putchar('"');
  end_field(name);
}

void document::number(const char *name, int64_t value, bool present) {
  if (!present) return no_field(name);
  begin_field(name);
  std::printf("%lld", static_cast<long long>(value));
  end_field(name);
}

void document::decimal(const char *name, double value, bool present) {
  if (!present || !std::isfinite(value)) return no_field(name);
  begin_field(name);
  std::printf(is_json() ? "%.15g" : "%f", value);
  end_field(name);
}

void document::boolean(const char *name, bool value, bool present) {
  if (!present) return no_field(name);
  begin_field(name);
  std::fputs(value ? "true" : "false", stdout);
  end_field(name);
}

void document::flag(const char *name, bool value) {
  if (is_json()) return boolean(name, value);
  number(name, value ? 1 : 0);
}

void document::address(const char *name, const uint8_t *bytes) {
  char buffer[sizeof "00:00:00:00:00:00"];
  text(name, bytes == nullptr ? nullptr : ifi_mac_ntop(buffer, sizeof buffer, bytes));
}

void document::bytes(const char *name, std::span<const uint8_t> bytes) {
  begin_field(name);
  if (is_json()) std::putchar('"');
  for (const uint8_t each : bytes) std::printf("%02x", each);
  if (is_json()) std::putchar('"');
  end_field(name);
}

void document::begin_list(const char *name) {
  if (!is_json()) return;
  begin_part(name);
  begin_parts(true);
}

void document::end_list() {
  if (is_json()) end_parts();
}

void document::begin_group(const char *name) {
  if (is_json()) {
    begin_part(name);
    begin_parts(false);
  } else {
    std::printf(" <%s>\n", name);
  }
}

void document::end_group(const char *name) {
  if (is_json()) {
    end_parts();
  } else {
    std::printf(" </%s>\n", name);
  }
}

void document::no_group(const char *name) {
  if (is_json()) no_field(name);
}

}  // namespace devfacts::tool
