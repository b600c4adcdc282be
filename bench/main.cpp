// Measures in the network namespace of the caller. What the printers print goes to standard output, so the measurements
// are wanted by --benchmark_out.
#include <benchmark/benchmark.h>
#include <devfacts/net.h>
#include <sys/wait.h>
#include <unistd.h>

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

void report(benchmark::State &state, const bench::costs &costs) {
  state.counters["interfaces"] = static_cast<double>(interface_count());
  state.counters["allocations"] = static_cast<double>(costs.allocations);
  state.counters["bytes"] = static_cast<double>(costs.bytes);
  state.counters["system_calls"] = static_cast<double>(costs.system_calls);
}

// Costs are counted when their turn comes, since they leave holes in the heap. Counting forks: the run after it makes
// the pages ours again.
void add(const bench::contender &each, void (*before)(), void (*after)()) {
  benchmark::RegisterBenchmark(each.name, [=](benchmark::State &state) {
    before();
    const bench::costs costs = bench::costs_of(each.run);
    each.run();
    for (auto _ : state) each.run();
    after();
    report(state, costs);
  });
}

// In a child, so that the heap of what is measured is a new program's.
bool all_agree() {
  const pid_t child = fork();
  if (child == 0) {
    bench::check_that_all_agree();
    _exit(0);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char **argv) {
  if (!all_agree()) return 1;
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
