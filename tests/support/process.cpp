#include "process.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

static std::string contents(FILE *file) {
  std::string text;
  std::rewind(file);
  for (int byte = std::getc(file); byte != EOF; byte = std::getc(file)) text.push_back(static_cast<char>(byte));
  std::fclose(file);
  return text;
}

void test::PrintTo(const ending &end, std::ostream *stream) {
  *stream << "\n" << end.out << "-- errors\n" << end.err << "-- status " << end.status << "\n";
}

test::ending test::run(const std::function<void()> &body) {
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
  const int end = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  const std::string written = contents(out);
  return {written, contents(err), end};
}

test::ending test::run_on_device(const std::function<void()> &body) {
  return run([&] {
    ASSERT_EQ(unshare(CLONE_NEWNS), 0);
    ASSERT_EQ(mount("", "/tmp", "tmpfs", 0, ""), 0);
    ASSERT_EQ(chroot("/tmp"), 0);
    ASSERT_EQ(chdir("/"), 0);
    body();
    leave();
  });
}

void test::on_device(const std::function<void()> &body, const std::string &out, const std::string &err) {
  EXPECT_EQ(run_on_device(body), (ending{out, err, 0}));
}

void test::leave() {
  std::fflush(nullptr);
  _exit(testing::Test::HasFailure() ? 99 : 0);
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

std::string test::read_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::map<std::string, std::string> test::files_below(const std::string &directory) {
  std::map<std::string, std::string> files;
  for (const auto &each : std::filesystem::recursive_directory_iterator(directory)) {
    const std::string path = each.path();
    if (each.is_regular_file()) files[path.substr(directory.size())] = read_file(path);
  }
  return files;
}
