// Start-up (dictionary and catalogue, once per process) and the metadata
// command over all tables.
#include "support/bench_support.h"

#include <benchmark/benchmark.h>

namespace {

using services::user::Preferences;

// Runs first in this program, so it times the real, once-only start-up.
void BM_QelStart(benchmark::State &state) {
  framework::Logger::setSink([](const framework::LogRecord &, void *) {});
  for (auto _ : state)
    QEL_Start();
}
BENCHMARK(BM_QelStart)->Iterations(1)->Unit(benchmark::kMicrosecond);

void BM_MetaAll(benchmark::State &state) {
  qelbench::start();
  utility::BufferStream out(8 << 20);
  services::user::Session session(out);
  session.getPreferences().setOutputFormat(static_cast<Preferences::OutputType>(state.range(0)));
  session.getPreferences().setLocale(LOCALE_DE);
  long bytes = 0;
  for (auto _ : state) {
    out.Rewind();
    cli_metaHandler(&session, "all");
    bytes += out.ReadAvailable();
  }
  state.SetLabel(strings::GS.toString(static_cast<unsigned>(state.range(0))));
  state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_MetaAll)->Arg(Preferences::OUTPUT_API)->Arg(Preferences::OUTPUT_JSON)
    ->Unit(benchmark::kMillisecond);

} // namespace
