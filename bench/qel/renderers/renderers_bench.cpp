// Rendering 10,000 volumes rows to the console and as an XML API body.
#include "support/bench_support.h"

#include <benchmark/benchmark.h>

namespace {

using services::user::Preferences;

// Times \p print (one full print into \p out) over a volumes table of
// \p rows rows in output type \p type; reports bytes, rows and the heap
// allocations of one print.
template <typename Print>
void measure(benchmark::State &state, Preferences::OutputType type, int rows, Print print) {
  utility::BufferStream out(256 << 20);
  services::user::Session session(out);
  session.getPreferences().setOutputFormat(type);
  session.getContext().setScreenWidth(200);
  QEL_DESC *d = qelbench::volumes(&session, rows);
  auto once = [&] {
    out.Rewind();
    d->printed = 0;
    print(session, out, d);
  };
  const long allocations = qelbench::allocationsOf(once);
  long bytes = 0;
  for (auto _ : state) {
    once();
    bytes += out.ReadAvailable();
  }
  state.SetItemsProcessed(state.iterations() * rows);
  state.SetBytesProcessed(bytes);
  state.counters["allocs/print"] = static_cast<double>(allocations);
  QEL_Free(d);
}

template <typename R> void render(benchmark::State &state, Preferences::OutputType type) {
  measure(state, type, static_cast<int>(state.range(0)),
          [](services::user::Session &session, utility::BufferStream &, QEL_DESC *d) {
            R renderer(&session);
            renderer.PrintTable(d, 0, 0);
          });
}

void BM_RenderConsole(benchmark::State &state) {
  render<ConsoleRenderer>(state, Preferences::OUTPUT_CONSOLE);
}
BENCHMARK(BM_RenderConsole)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_RenderXmlApi(benchmark::State &state) {
  render<XMLRenderer>(state, Preferences::OUTPUT_API);
}
BENCHMARK(BM_RenderXmlApi)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

namespace {

// The whole print entry for each output type, 10,000 volumes rows.
void BM_PrintData(benchmark::State &state) {
  const auto type = static_cast<Preferences::OutputType>(state.range(0));
  measure(state, type, static_cast<int>(state.range(1)),
          [](services::user::Session &session, utility::BufferStream &out, QEL_DESC *d) {
            QEL_Print_Data(d, &session, out, true, true, "show volumes");
          });
  state.SetLabel(strings::GS.toString(type));
}
BENCHMARK(BM_PrintData)
    ->ArgsProduct({{Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API,
                    Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2,
                    Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
                    Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG},
                   {10000}})
    ->Unit(benchmark::kMillisecond);

} // namespace
