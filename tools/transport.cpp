// Both ends of the datagram transport.
#include <devfacts/transport.h>
#include <sys/select.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "command.h"

namespace devfacts::tool {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) { interrupted = 1; }

// Signals that end the tool come only while it waits, so that none is missed and the socket is always removed. Gives
// the signals to wait with.
sigset_t catch_signals() {
  sigset_t ending;
  sigset_t before;
  sigemptyset(&ending);
  struct sigaction action {};
  action.sa_handler = interrupt;
  for (const int each : {SIGHUP, SIGINT, SIGPIPE, SIGTERM}) {
    sigaddset(&ending, each);
    sigaction(each, &action, nullptr);
  }
  sigprocmask(SIG_BLOCK, &ending, &before);
  return before;
}

int print_line(const void *text, uint32_t length) {
  std::fwrite(text, 1, length, stdout);
  std::putchar('\n');
  return std::fflush(stdout);
}

void print_until_interrupted(int fd, const sigset_t &signals) {
  while (interrupted == 0 && std::ferror(stdout) == 0) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    if (pselect(fd + 1, &set, nullptr, nullptr, nullptr, &signals) > 0) socket_read(fd, &set, print_line);
  }
}

// A file of another kind is not ours to remove.
bool is_free(const char *path) {
  struct stat found {};
  return lstat(path, &found) != 0 || S_ISSOCK(found.st_mode);
}

}  // namespace

exit_status listen(char **arguments) {
  const char *path = arguments[0];
  const sigset_t signals = catch_signals();
  const int fd = is_free(path) ? socket_input_init(path) : -1;
  if (fd < 0) {
    std::fprintf(stderr, "devfacts: cannot make a socket at \"%s\"\n", path);
    return failed;
  }
  print_until_interrupted(fd, signals);
  socket_input_shutdown(fd, path);
  return done;
}

// A message that is not sent for want of a connection has the same result as one that is; but a call has failed then.
exit_status send(char **arguments) {
  errno = 0;
  const int result = socket_write(arguments[1], static_cast<uint32_t>(std::strlen(arguments[1])), arguments[0]);
  if (result == 0 && errno == 0) return done;
  std::fprintf(stderr, "devfacts: the message to \"%s\" is not sent\n", arguments[0]);
  return failed;
}

}  // namespace devfacts::tool
