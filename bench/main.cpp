// Measures in the network namespace of the caller. What the printers print goes to standard output, so the measurements
// are wanted by --benchmark_out.
#include <benchmark/benchmark.h>
#include <devfacts/net.h>

#include "contenders.h"
#include "costs.h"

namespace {

size_t interface_count() {
  size_t count = 0;
  ifi_get_all();
  for (const list_link *link = interfaces.next; link != &interfaces; link = link->next) ++count;
  ifi_free_all();
  return count;
}

void report(benchmark::State &state, const bench::costs &costs, double count) {
  state.counters["interfaces"] = count;
  state.counters["allocations"] = static_cast<double>(costs.allocations);
  state.counters["bytes"] = static_cast<double>(costs.bytes);
  state.counters["system_calls"] = static_cast<double>(costs.system_calls);
}

void add(const bench::contender &each, void (*before)(), void (*after)()) {
  before();
  const bench::costs costs = bench::costs_of(each.run);
  after();
  const auto count = static_cast<double>(interface_count());
  benchmark::RegisterBenchmark(each.name, [=](benchmark::State &state) {
    before();
    for (auto _ : state) each.run();
    after();
    report(state, costs, count);
  });
}

}  // namespace

int main(int argc, char **argv) {
  bench::check_that_all_agree();
  for (const bench::contender &each : bench::collectors())
    add(
        each, [] {}, [] {});
  for (const bench::contender &each : bench::printers())
    add(
        each, [] { ifi_get_all_ip(); }, ifi_free_all);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
