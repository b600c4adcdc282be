// The documents that commands print. A command describes its fields once; the document writes them as XML, an element a
// line, or as one JSON object on one line.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace devfacts::tool {

enum class form : uint8_t { xml, json };

// What XML has for a field without a value: an element that says "N/A", or no element. JSON has null.
enum class absence : uint8_t { is_said, leaves_out };

class document {
 public:
  // The name is the root element's; a JSON object has no name.
  document(form wanted, const char *name, absence absent = absence::is_said);
  ~document();
  document(const document &) = delete;
  document &operator=(const document &) = delete;

  // A text; null is absent. In XML an empty one is "N/A" as well.
  void text(const char *name, const char *value);
  void text(const char *name, std::string_view value);
  void number(const char *name, int64_t value, bool present = true);
  // A number with decimals; one that is not finite is absent.
  void decimal(const char *name, double value, bool present = true);
  void boolean(const char *name, bool value, bool present = true);
  // A truth value that XML has as 1 or 0.
  void flag(const char *name, bool value);
  // A hardware address of six bytes; null is absent.
  void address(const char *name, const uint8_t *bytes);
  // Bytes as hexadecimal digits.
  void bytes(const char *name, std::span<const uint8_t> bytes);

  // Fields or rows of one kind. XML repeats the element, JSON has an array of that name.
  void begin_list(const char *name);
  void end_list();

  // Fields that belong together: a row of a list, or a part of the document.
  void begin_group(const char *name);
  void end_group(const char *name);
  // A part that is not there.
  void no_group(const char *name);

 private:
  bool is_json() const { return form_ == form::json; }
  void begin_part(const char *name);
  void begin_parts(bool is_list);
  void end_parts();
  void begin_field(const char *name);
  void end_field(const char *name);
  void no_field(const char *name);
  void print_text(std::string_view text);
  void print_character(std::string_view bytes);

  form form_;
  absence absence_;
  const char *root_;
  bool first_ = true;   // nothing is written yet of the innermost list or group
  uint8_t depth_ = 0;   // of lists and groups in each other
  uint32_t lists_ = 0;  // a bit a depth: a list is open there
};

}  // namespace devfacts::tool
