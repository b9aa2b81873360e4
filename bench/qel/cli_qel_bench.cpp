// Descriptor hot paths: filling a large volumes table, and sorting a million
// rows on a text and on a number column.
#include "support/bench_support.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using qelbench::start;

void BM_FillVolumes(benchmark::State &state) {
  start();
  const int rows = static_cast<int>(state.range(0));
  utility::BufferStream out(16);
  services::user::Session session(out);
  for (auto _ : state) {
    QEL_DESC *d = QEL_Create(&session, tGSvolumes, tGSnone, rows, 0);
    char text[64];
    for (int r = 0; r < rows; ++r)
      qelbench::fillVolumeRow(&session, d, r, text);
    state.PauseTiming();
    QEL_Free(d);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * rows);
  state.counters["cells/s"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * rows * 42, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_FillVolumes)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_SortOutput(benchmark::State &state) {
  start();
  const int rows = static_cast<int>(state.range(0));
  const bool text = state.range(1) != 0;
  utility::BufferStream out(16);
  services::user::Session session(out);
  // volumes sorts on volume-name (text); enclosure-list on enclosure-id.
  QEL_DESC *d = QEL_Create(&session, text ? tGSvolumes : tGSenclosure_2Dlist, tGSnone, rows, 0);
  std::mt19937 rng(42);
  char name[32];
  for (int r = 0; r < rows; ++r) {
    if (text) {
      std::snprintf(name, sizeof name, "vol%08u", static_cast<unsigned>(rng()));
      QEL_FillColumnString(&session, d, 3, r, name);
    } else {
      QEL_FillColumnU32(&session, d, 1, r, static_cast<unsigned>(rng()));
    }
  }
  std::vector<int> order(static_cast<std::size_t>(rows));
  for (auto _ : state) {
    SORTOutput(d, order.data());
    benchmark::DoNotOptimize(order.data());
  }
  state.SetItemsProcessed(state.iterations() * rows);
  QEL_Free(d);
}
BENCHMARK(BM_SortOutput)
    ->Args({1000000, 1})
    ->Args({1000000, 0})
    ->Unit(benchmark::kMillisecond);

} // namespace
