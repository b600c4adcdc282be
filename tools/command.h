// The commands of the tool.
#pragma once

namespace devfacts::tool {

enum exit_status { done = 0, failed = 1, wrong_usage = 2 };

// One command: what it is called, what it takes and does, in the words of --help, and how many arguments may follow its
// name.
struct command {
  const char *name;
  const char *arguments;
  const char *purpose;
  int least;
  int most;
  // Gets the arguments behind the name; the array ends with a null.
  exit_status (*run)(char **arguments);
};

exit_status net(char **arguments);
exit_status product(char **arguments);
exit_status config(char **arguments);
exit_status wireless(char **arguments);
exit_status peers(char **arguments);
exit_status radio(char **arguments);
exit_status ethernet(char **arguments);
exit_status records(char **arguments);
exit_status listen(char **arguments);
exit_status send(char **arguments);
exit_status translate(char **arguments);

}  // namespace devfacts::tool
