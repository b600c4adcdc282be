// devfacts: prints what the library knows of this device.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "command.h"

using namespace devfacts::tool;

namespace {

constexpr command commands[] = {
    {"net", "[NAME]", "the interfaces with their addresses and counters, or one of them", 0, 1, net},
    {"wireless", "NAME", "what a wireless interface is doing", 1, 1, wireless},
    {"peers", "[NAME]", "the stations connected to it; ra0 without a name", 0, 1, peers},
    {"radio", "NAME", "its counters and limits alone, from files: no driver is asked", 1, 1, radio},
    {"ethernet", "NAME", "what a wired link is doing", 1, 1, ethernet},
    {"product", "[KEY]", "the product's identity and capabilities, or one value of its description", 0, 1, product},
    {"config", "KEY", "one value of the system configuration", 1, 1, config},
    {"records", "[ACTION...]",
     "the factory records, or one: get ID; with --write behind: set ID HEX, delete ID, import FILE", 0, 4, records},
    {"listen", "PATH", "each message that arrives at a socket, which it makes, until interrupted", 1, 1, listen},
    {"send", "PATH TEXT", "sends a message to a socket", 2, 2, send},
    {"translate", "DIRECTORY CATALOGUE ID", "a text in the language of the device", 3, 3, translate},
};

void print_usage(FILE *out) {
  std::fputs("usage: devfacts COMMAND [ARGUMENT...]\n       devfacts --help | --version\n\ncommands:\n", out);
  for (const command &each : commands) {
    std::fprintf(out, "  %-10s %-22s %s\n", each.name, each.arguments, each.purpose);
  }
}

exit_status refuse(const char *what, const char *word) {
  std::fprintf(stderr, "devfacts: %s%s%s\n", what, *word != '\0' ? ": " : "", word);
  print_usage(stderr);
  return wrong_usage;
}

bool is_help(const char *word) { return std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0; }

const command *find_command(const char *name) {
  for (const command &each : commands) {
    if (std::strcmp(each.name, name) == 0) return &each;
  }
  return nullptr;
}

exit_status run(int count, char **words) {
  if (count < 1) return refuse("no command given", "");
  if (is_help(words[0]) || (count > 1 && is_help(words[1]))) return print_usage(stdout), done;
  if (std::strcmp(words[0], "--version") == 0) return std::puts("devfacts " DEVFACTS_VERSION), done;
  const command *chosen = find_command(words[0]);
  if (chosen == nullptr) return refuse("no such command", words[0]);
  if (count - 1 < chosen->least) return refuse("too few arguments", words[0]);
  if (count - 1 > chosen->most) return refuse("too many arguments", words[chosen->most + 1]);
  return chosen->run(words + 1);
}

}  // namespace

int main(int count, char **words) {
  exit_status status = run(count - 1, words + 1);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "devfacts: cannot write to standard output: %s\n", std::strerror(errno));
    if (status == done) status = failed;
  }
  return status;
}
