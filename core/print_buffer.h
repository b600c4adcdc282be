// Lines for standard output, gathered so that the stream is asked once for many of them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace devfacts {

// A buffer on the stack. What it holds goes out by one write when it is full, at flush() and at its end; a line is
// never divided between two writes.
class print_buffer {
 public:
  // cppcheck-suppress uninitMemberVar  ; the text is not cleared
  print_buffer() {}
  print_buffer(const print_buffer &) = delete;
  print_buffer &operator=(const print_buffer &) = delete;
  ~print_buffer() { flush(); }

  // A line "  <name>value</name>".
  void item(const char *name, const char *value) {
    if (!append(name, value)) flush_and_append(name, value);
  }
  void item(const char *name, uint32_t magnitude, bool is_negative = false);

  // A line as it is, with its newline; short ones only.
  void line(const char *text);
  static constexpr size_t max_line = 32;

  [[gnu::noinline]] void flush();

 private:
  static constexpr size_t capacity = 1024;

  bool append(const char *name, const char *value);  // false if it does not fit
  [[gnu::cold]] void flush_and_append(const char *name, const char *value);

  size_t size_ = 0;
  char text_[capacity + sizeof "  <></>\n"];  // the rest of an item is appended without a check
};

// One such line, by a write of its own.
void print_item(const char *name, const char *value);
void print_item(const char *name, uint32_t magnitude, bool is_negative = false);

}  // namespace devfacts
