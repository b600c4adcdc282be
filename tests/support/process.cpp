#include "process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace test {
namespace {

std::string contents(FILE *file) {
  std::string text;
  std::rewind(file);
  for (int byte; (byte = std::getc(file)) != EOF;) text.push_back(static_cast<char>(byte));
  std::fclose(file);
  return text;
}

}  // namespace

outcome in_child(const std::function<void()> &body) {
  FILE *out = std::tmpfile();
  FILE *err = std::tmpfile();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    dup2(fileno(out), STDOUT_FILENO);
    dup2(fileno(err), STDERR_FILENO);
    body();
    std::exit(testing::Test::HasFailure() ? 99 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), contents(out), contents(err)};
}

void expect_clean(const std::function<void()> &body) {
  const outcome result = in_child(body);
  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_EQ(result.err, "");
}

void expect_death(const std::function<void()> &body, const std::string &words) {
  const outcome result = in_child(body);
  EXPECT_EQ(result.status, 1) << result.out;
  EXPECT_EQ(result.err, words);
}

std::string shell(const std::string &command) {
  FILE *pipe = popen(("set -e; " + command).c_str(), "r");
  std::string text;
  for (int byte; (byte = std::getc(pipe)) != EOF;) text.push_back(static_cast<char>(byte));
  EXPECT_EQ(pclose(pipe), 0) << command;
  return text;
}

}  // namespace test
