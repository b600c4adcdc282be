// The table of the commands, and the command line.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command.h"
#include "text.h"

namespace devfacts::tool {
namespace {

exit_status help_command(const request &asked);

constexpr uint8_t watched_options = json_option | watch_option;

constexpr command commands[] = {
    {"status", "", "the whole device on one screen, for people", "devfacts status --watch", 0, 0, watch_option,
     status_command},
    {"net", "[NAME]", "the interfaces with their addresses and counters",
     "devfacts net eth0 --json | jq '.interfaces[].rx_bytes'", 0, 1, watched_options, net_command},
    {"wireless", "NAME", "what a wireless interface is doing", "devfacts wireless ra0 --watch 1", 1, 1, watched_options,
     wireless_command},
    {"peers", "[NAME]", "the stations connected to it; ra0 without a name", "devfacts peers --json | jq '.peers[].mac'",
     0, 1, watched_options, peers_command},
    {"radio", "NAME", "its counters and limits alone, from files: no driver is asked", "devfacts radio ra0", 1, 1,
     json_option, radio_command},
    {"ethernet", "NAME", "what a wired link is doing", "devfacts ethernet eth0 --json | jq .speed", 1, 1, json_option,
     ethernet_command},
    {"product", "[KEY]", "the product's identity and capabilities, or one value", "devfacts product radio.0.master", 0,
     1, json_option | check_option, product_command},
    {"config", "KEY", "one value of the system configuration", "devfacts config system.hostname", 1, 1, json_option,
     config_command},
    {"records", "[ACTION...]", "the factory records, or one action on them", "devfacts records set 15 0168 --write", 0,
     3, json_option | write_option, records_command, print_record_actions},
    {"listen", "PATH", "each message that arrives at a socket, until interrupted", "devfacts listen /tmp/events --json",
     1, 1, json_option, listen_command},
    {"send", "PATH TEXT", "sends a message to a socket", "devfacts send /tmp/events -- --text", 2, 2, 0, send_command},
    {"translate", "DIRECTORY CATALOGUE ID", "a text in the language of the device",
     "devfacts translate /usr/share/po status Signal", 3, 3, 0, translate_command},
    {"metrics", "", "counters, rates and signals for Prometheus", "devfacts metrics | promtool check metrics", 0, 0, 0,
     metrics_command},
    {"help", "[COMMAND]", "the commands, or the arguments and options of one", "devfacts help records", 0, 1, 0,
     help_command},
};

// Options as they are typed, and what the help says of them.
constexpr struct {
  option bit;
  char name[8];
  char synopsis[20];
  char purpose[56];
} options[] = {
    {json_option, "--json", "--json", "one JSON object on one line"},
    {watch_option, "--watch", "--watch [SECONDS]", "again and again, with rates; 2 seconds if not said"},
    {write_option, "--write", "--write", "for each action that changes the store"},
    {check_option, "--check", "--check [FILE]", "what is wrong with a description, or with /etc/product"},
};

constexpr unsigned default_seconds = 2;
constexpr unsigned max_seconds = 86400;

void print_usage(FILE *out) {
  std::fputs("usage: devfacts COMMAND [ARGUMENT...]\n       devfacts --help | --version\n\ncommands:\n", out);
  for (const command &each : commands) std::fprintf(out, "  %-10s %s\n", each.name, each.purpose);
  std::fputs("\ndevfacts help COMMAND: its arguments, its options and an example\n", out);
}

void print_synopsis(FILE *out, const command &which) {
  std::fprintf(out, "usage: devfacts %s%s%s", which.name, *which.arguments != '\0' ? " " : "", which.arguments);
  for (const auto &each : options) {
    if ((which.options & each.bit) != 0) std::fprintf(out, " [%s]", each.synopsis);
  }
  std::fputc('\n', out);
}

void print_help(const command &which) {
  print_synopsis(stdout, which);
  std::printf("\n%s: %s\n", which.name, which.purpose);
  for (const auto &each : options) {
    if ((which.options & each.bit) != 0) std::printf("  %-18s %s\n", each.synopsis, each.purpose);
  }
  if (which.print_details != nullptr) which.print_details();
  std::printf("\nexample: %s\n", which.example);
}

exit_status refuse(const command &which, const char *what, const char *argument) {
  print_error("%s: %s", what, argument);
  print_synopsis(stderr, which);
  return wrong_usage;
}

bool is_help(const char *argument) { return std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0; }

const command *find_command(const char *name) {
  for (const command &each : commands) {
    if (std::strcmp(each.name, name) == 0) return &each;
  }
  return nullptr;
}

exit_status refuse_command(const char *name) {
  print_error("no such command: %s", name);
  print_usage(stderr);
  return wrong_usage;
}

exit_status help_command(const request &asked) {
  if (asked.count == 0) {
    print_usage(stdout);
    return done;
  }
  const command *which = find_command(asked.arguments[0]);
  if (which == nullptr) return refuse_command(asked.arguments[0]);
  print_help(*which);
  return done;
}

// The number of seconds that an argument is; 0 if it is no such number.
unsigned parse_seconds(const char *argument) {
  if (argument == nullptr || *argument < '0' || *argument > '9') return 0;
  char *end = nullptr;
  const unsigned long seconds = std::strtoul(argument, &end, 10);
  return *end == '\0' && seconds <= max_seconds ? static_cast<unsigned>(seconds) : 0;
}

uint8_t option_bit(const char *argument, uint8_t allowed) {
  for (const auto &each : options) {
    if ((allowed & each.bit) != 0 && std::strcmp(argument, each.name) == 0) return each.bit;
  }
  return 0;
}

// Sorts the arguments: options become bits, the others move to the front. Returns the first that is neither, if any.
const char *sort_arguments(request &asked, char **from, uint8_t allowed) {
  bool is_over = false;  // nothing after "--" is an option
  for (; *from != nullptr; ++from) {
    if (!is_over && std::strcmp(*from, "--") == 0) {
      is_over = true;
    } else if (is_over || std::strncmp(*from, "--", 2) != 0) {
      asked.arguments[asked.count++] = *from;
    } else {
      const uint8_t bit = option_bit(*from, allowed);
      if (bit == 0) return *from;
      asked.options |= bit;
      const unsigned seconds = bit == watch_option ? parse_seconds(from[1]) : 0;
      if (seconds == 0) continue;
      asked.seconds = seconds;
      ++from;
    }
  }
  asked.arguments[asked.count] = nullptr;
  return nullptr;
}

bool asks_for_help(char **arguments) {
  if (*arguments != nullptr && std::strcmp(*arguments, "-h") == 0) return true;
  for (; *arguments != nullptr && std::strcmp(*arguments, "--") != 0; ++arguments) {
    if (is_help(*arguments)) return true;
  }
  return false;
}

// Until the command fails, standard output cannot be written, or a signal ends the process.
exit_status repeat(const command &which, const request &asked) {
  const bool on_screen = asked.is_watched() && isatty(STDOUT_FILENO) != 0;
  for (;;) {
    if (on_screen) std::fputs("\033[H\033[2J", stdout);
    const exit_status status = which.run(asked);
    if (std::fflush(stdout) != 0 || status != done) return status;
    sleep(asked.seconds);
    if (asked.is_watched() && !on_screen) std::putchar('\n');
  }
}

exit_status run(const command &which, char **arguments) {
  if (asks_for_help(arguments)) {
    print_help(which);
    return done;
  }
  request asked{arguments, 0, 0, default_seconds};
  const char *const unknown = sort_arguments(asked, arguments, which.options);
  if (unknown != nullptr) return refuse(which, "no such option", unknown);
  if (asked.count < which.min_count) return refuse(which, "too few arguments", which.name);
  if (asked.count > which.max_count) return refuse(which, "too many arguments", arguments[which.max_count]);
  return asked.has(watch_option) ? repeat(which, asked) : which.run(asked);
}

}  // namespace

exit_status run(int count, char **arguments) {
  if (count < 1) {
    print_error("no command given");
    print_usage(stderr);
    return wrong_usage;
  }
  if (is_help(arguments[0])) {
    print_usage(stdout);
    return done;
  }
  if (std::strcmp(arguments[0], "--version") == 0) {
    std::puts("devfacts " DEVFACTS_VERSION);
    return done;
  }
  const command *which = find_command(arguments[0]);
  return which != nullptr ? run(*which, arguments + 1) : refuse_command(arguments[0]);
}

}  // namespace devfacts::tool
