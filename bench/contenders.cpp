#include "contenders.h"

#include <devfacts/net.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "peers/peers.h"

namespace {

void collect() {
  ifi_get_all_ip();
  ifi_free_all();
}

void print() {
  ifi_dump_all(nullptr);
  std::fflush(stdout);
}

std::string contents_of(int fd) {
  std::string text(static_cast<size_t>(lseek(fd, 0, SEEK_END)), '\0');
  if (pread(fd, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) std::abort();
  return text;
}

std::string printed_by(bench::work run) {
  const int terminal = dup(STDOUT_FILENO);
  const int file = memfd_create("document", 0);
  dup2(file, STDOUT_FILENO);
  run();
  dup2(terminal, STDOUT_FILENO);
  std::string text = contents_of(file);
  close(file);
  close(terminal);
  return text;
}

// A copy of the document and one write of it.
void write_document() {
  static const std::string document = printed_by(print);
  static std::string copy;
  copy = document;
  std::fwrite(copy.data(), 1, copy.size(), stdout);
  std::fflush(stdout);
}

void require(bool same, const char *what) {
  if (same) return;
  std::fprintf(stderr, "%s gives another document\n", what);
  std::exit(1);
}

constexpr bench::contender collecting[] = {
    {"collect/devfacts", collect},
    {"collect/limit", bench::receive_only},
    {"collect/libmnl", bench::collect_with_libmnl},
    {"collect/libnl", bench::collect_with_libnl},
    {"collect/getifaddrs", bench::collect_with_getifaddrs},
};

constexpr bench::contender printing[] = {
    {"print/devfacts", print},
    {"print/limit", write_document},
    {"print/libxml2", bench::print_with_libxml2},
    {"print/glib", bench::print_with_glib},
};

}  // namespace

std::span<const bench::contender> bench::collectors() { return collecting; }

std::span<const bench::contender> bench::printers() { return printing; }

void bench::check_that_all_agree() {
  ifi_get_all_ip();
  const std::string document = printed_by(print);
  for (const contender &each : printing) require(printed_by(each.run) == document, each.name);
  ifi_free_all();
  fill_with_libmnl();
  require(printed_by(print) == document, "collect/libmnl");
  ifi_free_all();
}
