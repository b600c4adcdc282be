// devfacts: prints what the library knows of this device.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "command.h"
#include "text.h"

using namespace devfacts::tool;

int main(int count, char **arguments) {
  exit_status status = run(count - 1, arguments + 1);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    print_error("cannot write to standard output: %s", std::strerror(errno));
    if (status == done) status = failed;
  }
  return status;
}
