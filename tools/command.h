// The commands of the tool.
#pragma once

#include <cstdint>

#include "document.h"

namespace devfacts::tool {

enum exit_status { done = 0, failed = 1, wrong_usage = 2 };

enum option : uint8_t { json_option = 1, watch_option = 2, write_option = 4, check_option = 8 };

// What a command line asks of a command.
struct request {
  char **arguments;  // those after the command's name that are no options; a null ends them
  int count;
  uint8_t options;   // a bit each
  unsigned seconds;  // between two readings of --watch

  bool has(option wanted) const { return (options & wanted) != 0; }
  form wanted_form() const { return has(json_option) ? form::json : form::xml; }
  // For people, again and again.
  bool is_watched() const { return has(watch_option) && !has(json_option); }
};

// One command: its name, its arguments, its purpose and an example in the words of the help, how many arguments it
// takes, and which options.
struct command {
  const char *name;
  const char *arguments;
  const char *purpose;
  const char *example;
  uint8_t min_count;
  uint8_t max_count;
  uint8_t options;
  exit_status (*run)(const request &asked);
  void (*print_details)() = nullptr;  // what the help says beyond that
};

// Runs the command of a command line without its program name; a null ends the arguments, whose order is changed.
exit_status run(int count, char **arguments);

exit_status config_command(const request &asked);
exit_status ethernet_command(const request &asked);
exit_status listen_command(const request &asked);
exit_status metrics_command(const request &asked);
exit_status net_command(const request &asked);
exit_status peers_command(const request &asked);
exit_status product_command(const request &asked);
exit_status radio_command(const request &asked);
exit_status records_command(const request &asked);
exit_status send_command(const request &asked);
exit_status status_command(const request &asked);
exit_status translate_command(const request &asked);
exit_status wireless_command(const request &asked);

void print_record_actions();

}  // namespace devfacts::tool
