// Looking a text up in a catalogue of 20 or 2,000 entries, against fgets alone up to the same entry. Needs the language
// "de" in /etc/lang.
#include <benchmark/benchmark.h>
#include <devfacts/i18n.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int lines_each = 4;
constexpr char path[] = "de/texts.po";

void write_catalogue(int entries) {
  mkdir("de", 0700);
  FILE *file = std::fopen(path, "w");
  for (int i = 1; i <= entries; ++i) {
    std::fprintf(file, "#: status.c:%d\nmsgid \"Signal of station %d\"\nmsgstr \"Empfang von Station %d\"\n\n", i, i,
                 i);
  }
  std::fclose(file);
  if (set_po_access_path("texts", ".") != 0) std::abort();
}

bool with_devfacts(int entry) {
  return std::strncmp(gettext(("Signal of station " + std::to_string(entry)).c_str()), "Empfang", 7) == 0;
}

bool with_fgets(int entry) {
  char line[4096];
  FILE *file = std::fopen(path, "r");
  for (int left = (entry - 1) * lines_each + 3; left > 0 && std::fgets(line, sizeof line, file) != nullptr; --left) {
    benchmark::DoNotOptimize(line);
  }
  std::fclose(file);
  return std::strncmp(line, "msgstr", 6) == 0;
}

void translate(benchmark::State &state, bool (*look_up)(int entry)) {
  write_catalogue(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    if (!look_up(static_cast<int>(state.range(1)))) std::abort();
  }
  std::remove(path);
  std::remove("de");
}

}  // namespace

BENCHMARK_CAPTURE(translate, devfacts, with_devfacts)->Args({20, 20})->Args({2000, 1})->Args({2000, 2000});
BENCHMARK_CAPTURE(translate, limit, with_fgets)->Args({20, 20})->Args({2000, 1})->Args({2000, 2000});
