// Both ends of the datagram transport.
#include <devfacts/transport.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "command.h"
#include "core/owner.h"
#include "text.h"

namespace devfacts::tool {
namespace {

constexpr size_t max_payload = 1596;  // what receivers of the library take
constexpr size_t max_datagram = max_payload + sizeof(uint32_t);
constexpr size_t max_path = sizeof sockaddr_un{}.sun_path - 1;

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) { interrupted = 1; }

// Signals that end the tool come only while it waits, so that no signal is missed and the socket is always removed. A
// pipe that nobody reads is an error of writing. Returns the signals to wait with.
sigset_t catch_signals() {
  sigset_t ending;
  sigset_t before;
  sigemptyset(&ending);
  struct sigaction action {};
  action.sa_handler = interrupt;
  for (const int each : {SIGHUP, SIGINT, SIGTERM}) {
    sigaddset(&ending, each);
    sigaction(each, &action, nullptr);
  }
  signal(SIGPIPE, SIG_IGN);
  sigprocmask(SIG_BLOCK, &ending, &before);
  return before;
}

// One message is one line, whatever its bytes are.
void print_message(form wanted, const char *payload, uint32_t length) {
  if (wanted == form::xml) {
    print_visible(stdout, {payload, length}, quoting::quoted);
    std::putchar('\n');
    return;
  }
  document out(form::json, "message");
  out.number("length", length);
  out.text("text", std::string_view(payload, length));
  out.bytes("bytes", {reinterpret_cast<const uint8_t *>(payload), length});
}

void receive(int fd, form wanted) {
  alignas(uint32_t) char datagram[max_datagram];
  const int received = socket_input_read_single(fd, datagram, sizeof datagram);
  uint32_t length = 0;
  const void *payload = socket_input_extract(datagram, static_cast<uint32_t>(received), &length);
  if (payload != nullptr) {
    print_message(wanted, static_cast<const char *>(payload), length);
  } else if (received > 0) {
    print_error("a datagram that is no message, of %d bytes", received);
  }
}

// Until a signal arrives or standard output cannot be written. A set has no place for every descriptor, so that it is
// poll that waits.
bool print_until_interrupted(int fd, const sigset_t &signals, form wanted) {
  pollfd slots[] = {{fd, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
  while (interrupted == 0) {
    if (ppoll(slots, 2, nullptr, &signals) <= 0) continue;
    if ((slots[0].revents & POLLIN) != 0) receive(fd, wanted);
    if ((slots[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) errno = EPIPE;
    if (std::fflush(stdout) != 0 || slots[1].revents != 0) return false;
  }
  return true;
}

// A file of another kind is not ours to remove.
bool is_free(const char *path) {
  struct stat found {};
  return lstat(path, &found) != 0 || S_ISSOCK(found.st_mode);
}

exit_status fail(const char *what, const char *path, const char *reason) {
  print_error("%s \"%s\": %s", what, path, reason);
  return failed;
}

bool can_connect(const char *path) {
  sockaddr_un address{AF_UNIX, {}};
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  const unique_fd fd{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
  return connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

// Why a message cannot be sent; null if nothing is known to be in the way.
const char *obstacle(const char *text, const char *path) {
  if (*text == '\0') return "it is empty, and no receiver takes that";
  if (std::strlen(text) > max_payload) return "it is longer than 1596 bytes, and no receiver takes that";
  if (std::strlen(path) > max_path) return "the path is too long for a socket";
  return can_connect(path) ? nullptr : std::strerror(errno);
}

}  // namespace

exit_status listen_command(const request &asked) {
  constexpr char what[] = "cannot make a socket at";
  const char *path = asked.arguments[0];
  if (!is_free(path)) return fail(what, path, "something else is there");
  const sigset_t signals = catch_signals();
  const int fd = socket_input_init(path);
  if (fd < 0) return fail(what, path, std::strerror(std::strlen(path) > max_path ? ENAMETOOLONG : errno));
  const bool is_written = print_until_interrupted(fd, signals, asked.wanted_form());
  const int error = errno;
  socket_input_shutdown(fd, path);
  if (is_written) return done;
  print_error("cannot write to standard output: %s", std::strerror(error));
  clearerr(stdout);
  return failed;
}

// Without a connection nothing is sent, which has the same result as success; but a call has failed then.
exit_status send_command(const request &asked) {
  constexpr char what[] = "cannot send the message to";
  const char *path = asked.arguments[0];
  const char *text = asked.arguments[1];
  const char *reason = obstacle(text, path);
  if (reason != nullptr) return fail(what, path, reason);
  errno = 0;
  const int result = socket_write(text, static_cast<uint32_t>(std::strlen(text)), path);
  if (result == 0 && errno == 0) return done;
  const bool is_full = result != 0 && (errno == 0 || errno == EAGAIN);
  return fail(what, path, is_full ? "its queue stayed full for 2 seconds" : std::strerror(errno));
}

}  // namespace devfacts::tool
