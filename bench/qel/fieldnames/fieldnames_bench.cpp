// Dictionary: the builders, and the lookups every header and property makes.
#include <qel/qel.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

void BM_BuildDictionary(benchmark::State &state) {
  for (auto _ : state) {
    init_FieldNames();
    init_LocaleFieldNames();
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_BuildDictionary);

// Every field keyword, in token order, with a table for the variant scan.
std::vector<unsigned> fieldTokens() {
  init_FieldNames();
  init_LocaleFieldNames();
  std::vector<unsigned> tokens;
  for (unsigned t = 1; t <= 7626; ++t)
    if (MetaDataLookupTable[t - 1])
      tokens.push_back(t);
  return tokens;
}

void BM_GetConsoleLabel(benchmark::State &state) {
  const auto tokens = fieldTokens();
  const auto locale = static_cast<LocaleCode>(state.range(0));
  for (auto _ : state)
    for (unsigned t : tokens)
      benchmark::DoNotOptimize(getConsoleLabel(static_cast<int>(t), tGSdrives, locale));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(tokens.size()));
}
BENCHMARK(BM_GetConsoleLabel)->Arg(LOCALE_EN)->Arg(LOCALE_DE);

void BM_GetXMLName(benchmark::State &state) {
  const auto tokens = fieldTokens();
  for (auto _ : state)
    for (unsigned t : tokens)
      benchmark::DoNotOptimize(getXMLName(t));
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(tokens.size()));
}
BENCHMARK(BM_GetXMLName);

} // namespace
