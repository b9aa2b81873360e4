// Registry lookups: getColumnType runs for every cell filled and printed,
// getTable for every descriptor created.
#include "support/bench_support.h"

#include <benchmark/benchmark.h>

namespace {

using qelbench::start;

void BM_GetColumnType(benchmark::State &state) {
  start();
  for (auto _ : state)
    for (int c = 0; c < 42; ++c)
      benchmark::DoNotOptimize(getColumnType(tGSvolumes, c));
  state.SetItemsProcessed(state.iterations() * 42);
}
BENCHMARK(BM_GetColumnType);

void BM_GetTable(benchmark::State &state) {
  start();
  // An indexed basetype, and one kept in an overflow slot.
  const GS_TokenValues token = state.range(0) ? tGSvolumes : tGSpool_2Dhist_2Dstatistics;
  TableMetaDataManager *registry = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  for (auto _ : state)
    benchmark::DoNotOptimize(registry->getTable(token));
}
BENCHMARK(BM_GetTable)->Arg(1)->Arg(0);

} // namespace
