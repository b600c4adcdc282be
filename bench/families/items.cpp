// Single items of a document on standard output, a number, a text and a text to escape, against printf and against one
// fwrite of the line.
#include <benchmark/benchmark.h>
#include <devfacts/core.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr char line[] = "  <station>signal and noise</station>\n";

void number_with_devfacts() { xml_int_item("station", -1234567); }
void number_with_printf() { std::printf("  <%s>%d</%s>\n", "station", -1234567, "station"); }
void text_with_devfacts() { xml_str_item("station", "signal and noise"); }
void text_with_printf() { std::printf("  <%s>%s</%s>\n", "station", "signal and noise", "station"); }
void escaped_with_devfacts() { xml_str_esc_item("station", "signal & noise"); }
void write_line() { std::fwrite(line, 1, sizeof line - 1, stdout); }

void item(benchmark::State &state, void (*print)()) {
  for (auto _ : state) print();
}

}  // namespace

BENCHMARK_CAPTURE(item, devfacts / number, number_with_devfacts);
BENCHMARK_CAPTURE(item, limit / number, write_line);
BENCHMARK_CAPTURE(item, printf / number, number_with_printf);
BENCHMARK_CAPTURE(item, devfacts / text, text_with_devfacts);
BENCHMARK_CAPTURE(item, limit / text, write_line);
BENCHMARK_CAPTURE(item, printf / text, text_with_printf);
BENCHMARK_CAPTURE(item, devfacts / escaped, escaped_with_devfacts);
BENCHMARK_CAPTURE(item, limit / escaped, write_line);
