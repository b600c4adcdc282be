// Walking a file of "key: value" lines, against fgets alone and against the lines of other ways.
#include <benchmark/benchmark.h>
#include <devfacts/core.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char path[] = "scanner.txt";

void write_lines(int count) {
  FILE *file = std::fopen(path, "w");
  for (int i = 0; i < count; ++i) std::fprintf(file, "Counter %d of peer: %d\n", i % 100, i * 12345);
  std::fclose(file);
}

int count_pair(void *count, char *key, char *value) {
  benchmark::DoNotOptimize(key);
  benchmark::DoNotOptimize(value);
  ++*static_cast<int *>(count);
  return 0;
}

int with_devfacts() {
  int count = 0;
  iterate(path, nullptr, count_pair, &count);
  return count;
}

int with_fgets() {
  int count = 0;
  char line[1024];
  FILE *file = std::fopen(path, "r");
  while (std::fgets(line, sizeof line, file) != nullptr) {
    benchmark::DoNotOptimize(line);
    ++count;
  }
  std::fclose(file);
  return count;
}

int with_getline() {
  int count = 0;
  char *line = nullptr;
  size_t capacity = 0;
  FILE *file = std::fopen(path, "r");
  for (ssize_t length = 0; (length = getline(&line, &capacity, file)) > 0;) {
    char *value = std::strchr(line, ':');
    if (value == nullptr) break;
    line[length - 1] = *value = '\0';
    count_pair(&count, line, value + 1);
  }
  std::free(line);
  std::fclose(file);
  return count;
}

void scan(benchmark::State &state, int (*walk)()) {
  const int lines = static_cast<int>(state.range(0));
  write_lines(lines);
  for (auto _ : state) {
    if (walk() != lines) state.SkipWithError("lines are missing");
  }
  unlink(path);
}

}  // namespace

// A file of the size that drivers have, and one of 1 MB.
BENCHMARK_CAPTURE(scan, devfacts, with_devfacts)->Arg(20)->Arg(35000);
BENCHMARK_CAPTURE(scan, limit, with_fgets)->Arg(20)->Arg(35000);
BENCHMARK_CAPTURE(scan, getline, with_getline)->Arg(20)->Arg(35000);
