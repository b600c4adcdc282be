#include "process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace test {
namespace {

std::string rest_of(FILE *file) {
  std::string text;
  for (int byte; (byte = std::getc(file)) != EOF;) text.push_back(static_cast<char>(byte));
  return text;
}

}  // namespace

outcome in_child(const std::function<void()> &body) {
  FILE *out = std::tmpfile(), *err = std::tmpfile();
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
  for (FILE *file : {out, err}) std::rewind(file);
  return {rest_of(out), rest_of(err), WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
}

void expect_clean(const std::function<void()> &body, const std::string &words) {
  EXPECT_EQ(in_child(body).all(), "|" + words + "|0");
}

void expect_death(const std::string &words, const std::function<void()> &body) {
  EXPECT_EQ(in_child(body).all(), "|" + words + "|1");
}

std::string shell(const std::string &command) {
  FILE *pipe = popen(("set -e; " + command).c_str(), "r");
  const std::string text = rest_of(pipe);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return text;
}

}  // namespace test
