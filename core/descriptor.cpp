// One flag of a descriptor at a time: read, change, write.
#include <devfacts/core.h>
#include <fcntl.h>

namespace {

struct flag_word {
  int read_command;
  int write_command;
  const char *failure;
};

constexpr flag_word descriptor_flags{F_GETFD, F_SETFD, "cannot set FD_CLOEXEC flag.\n"};
constexpr flag_word status_flags{F_GETFL, F_SETFL, "cannot set O_NONBLOCK flags.\n"};

// The reading call needs no check: if it fails, so does the writing one.
int change(int fd, const flag_word &word, int set, int clear) {
  const int flags = fcntl(fd, word.read_command);
  const int result = fcntl(fd, word.write_command, (flags | set) & ~clear);
  if (result < 0) die("%s", word.failure);
  return result;
}

}  // namespace

int set_coe(int fd) { return change(fd, descriptor_flags, FD_CLOEXEC, 0); }

int set_bio(int fd) { return change(fd, status_flags, 0, O_NONBLOCK); }

int set_nio(int fd) { return change(fd, status_flags, O_NONBLOCK, 0); }
