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

BENCHMARK_CAPTURE(item, devfacts_number, number_with_devfacts)->Name("item/devfacts/number");
BENCHMARK_CAPTURE(item, limit_number, write_line)->Name("item/limit/number");
BENCHMARK_CAPTURE(item, printf_number, number_with_printf)->Name("item/printf/number");
BENCHMARK_CAPTURE(item, devfacts_text, text_with_devfacts)->Name("item/devfacts/text");
BENCHMARK_CAPTURE(item, limit_text, write_line)->Name("item/limit/text");
BENCHMARK_CAPTURE(item, printf_text, text_with_printf)->Name("item/printf/text");
BENCHMARK_CAPTURE(item, devfacts_escaped, escaped_with_devfacts)->Name("item/devfacts/escaped");
BENCHMARK_CAPTURE(item, limit_escaped, write_line)->Name("item/limit/escaped");
