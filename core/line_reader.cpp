#include "core/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <utility>

using namespace devfacts;

namespace {

// The first newline from text to end, which is one. The C library's search has vector code on 64-bit processors; on the
// device it takes longer to begin than a line does.
char *find_newline(char *text, const char *end) {
  if constexpr (sizeof(void *) > 4)
    return static_cast<char *>(std::memchr(text, '\n', static_cast<size_t>(end - text) + 1));
  while (*text != '\n') ++text;
  return text;
}

}  // namespace

// cppcheck-suppress uninitMemberVar  ; the buffer is not cleared
line_reader::line_reader(const char *path, size_t max_line)
    : file_(open(path, O_RDONLY | O_CLOEXEC)), max_line_(max_line) {}

// Adds to the line at hand, which moves to the front.
bool line_reader::read_on() {
  const auto kept = static_cast<size_t>(end_ - next_);
  std::memmove(buffer_, next_, kept);
  const ssize_t count = is_last_ ? 0 : read(file_.get(), buffer_ + kept, capacity - kept);
  is_last_ = count <= 0;
  next_ = buffer_;
  end_ = count < 0 ? buffer_ : buffer_ + kept + count;
  return count > 0;
}

char *line_reader::next() {
  if (held_ != '\0') *next_ = std::exchange(held_, '\0');
  do {
    *end_ = '\n';  // ends the search
    char *stop = find_newline(next_, end_);
    if (static_cast<size_t>(stop - next_) >= max_line_) {
      stop = next_ + max_line_;
      held_ = std::exchange(*stop, '\0');
      return std::exchange(next_, stop);
    }
    if (stop != end_) {
      *stop = '\0';
      return std::exchange(next_, stop + 1);
    }
  } while (read_on());
  *end_ = '\0';
  return next_ != end_ ? std::exchange(next_, end_) : nullptr;
}
