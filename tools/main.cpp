// devfacts: prints what the library knows of this device.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "command.h"
#include "text.h"

using namespace devfacts::tool;

namespace {

// The first files that are opened would take the places of closed standard streams, and what is printed would go into
// them. A place that is only held refuses what is printed, as a closed one does.
void hold_closed_streams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) < 0) open("/", O_PATH);
  }
}

}  // namespace

int main(int count, char **arguments) {
  hold_closed_streams();
  exit_status status = run(count - 1, arguments + 1);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    print_error("cannot write to standard output: %s", std::strerror(errno));
    if (status == done) status = failed;
  }
  return status;
}
