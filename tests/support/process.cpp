#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "test.h"

static std::string rest_of(FILE *file) {
  std::string text;
  for (int byte; (byte = std::getc(file)) != EOF;) text.push_back(static_cast<char>(byte));
  return text;
}

std::string test::run(const std::function<void()> &body) {
  FILE *out = std::tmpfile(), *err = std::tmpfile();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    dup2(fileno(out), STDOUT_FILENO), dup2(fileno(err), STDERR_FILENO);
    body();
    std::exit(testing::Test::HasFailure() ? 99 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  std::rewind(out), std::rewind(err);
  status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  const std::string text = rest_of(out) + "|" + rest_of(err) + "|" + std::to_string(status);
  std::fclose(out), std::fclose(err);
  return text;
}

void test::expect_run(const std::string &end, const std::function<void()> &body) { EXPECT_EQ(run(body), end); }

void test::leave() {
  std::fflush(nullptr);
  _exit(testing::Test::HasFailure() ? 99 : 0);
}

void test::on_device(const std::function<void()> &body, const std::string &end) {
  expect_run(end, [&] {
    ASSERT_EQ(unshare(CLONE_NEWNS) + mount("", "/tmp", "tmpfs", 0, "") + chroot("/tmp") + chdir("/"), 0);
    body();
    leave();
  });
}

void test::interrupt_every(int microseconds) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, nullptr);
  const itimerval timer{{0, microseconds}, {0, microseconds}};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

void test::use_up_descriptors() {
  const rlimit limit{2000, 2000};
  setrlimit(RLIMIT_NOFILE, &limit);
  const int first = dup(STDOUT_FILENO);
  while (dup(STDOUT_FILENO) < FD_SETSIZE) continue;
  close(first);
}

void test::write_file(const std::string &path, const std::string &text) {
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string test::data(const std::string &name) {
  std::ifstream file(name, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::vector<std::string>> test::rows(const std::string &name) {
  std::vector<std::vector<std::string>> cells(1, {""});
  const std::string text = data(name);
  for (size_t i = 0; i + 1 < text.size(); ++i) {
    std::string &cell = cells.back().back();
    if (text[i] == '\n') {
      cells.push_back({""});
    } else if (text[i] == '|') {
      cells.back().emplace_back();
    } else if (text[i] != '\\') {
      cell += text[i];
    } else if (std::isdigit(text[++i]) != 0) {
      const size_t digits = text.find_first_not_of("0123456789", i) - i;
      cell.append(std::stoul(text.substr(i, digits)), text[i + digits]), i += digits;
    } else {
      cell += text[i] == 'n' ? '\n' : '\t';
    }
  }
  return cells;
}

std::string test::shown(const void *bytes, size_t count) {
  std::string text = bytes == nullptr ? "-" : std::string(static_cast<const char *>(bytes), count);
  std::replace(text.begin(), text.end(), '\0', '.');
  return text;
}
