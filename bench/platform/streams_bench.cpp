// Stream write paths: characters, texts and formatted numbers into a buffer
// stream, the way renderers write cells.
#include <qel/qel.h>

#include <benchmark/benchmark.h>

namespace {

constexpr int kBufferSize = 1 << 20;

void BM_PutC(benchmark::State &state) {
  utility::BufferStream out(kBufferSize);
  out.setSilentTruncation(true);
  for (auto _ : state) {
    out.Rewind();
    for (int i = 0; i < 4096; ++i)
      out.PutC(static_cast<char>('a' + (i & 15)));
    benchmark::DoNotOptimize(out.pTail());
  }
  state.SetBytesProcessed(state.iterations() * 4096);
}
BENCHMARK(BM_PutC);

void BM_PutS(benchmark::State &state) {
  utility::BufferStream out(kBufferSize);
  out.setSilentTruncation(true);
  const int len = static_cast<int>(state.range(0));
  std::string text(static_cast<std::size_t>(len), 'v');
  for (auto _ : state) {
    out.Rewind();
    for (int i = 0; i < 256; ++i)
      out.PutS(text.c_str());
    benchmark::DoNotOptimize(out.pTail());
  }
  state.SetBytesProcessed(state.iterations() * 256 * len);
}
BENCHMARK(BM_PutS)->Arg(8)->Arg(32)->Arg(256);

void BM_PutF(benchmark::State &state) {
  utility::BufferStream out(kBufferSize);
  out.setSilentTruncation(true);
  for (auto _ : state) {
    out.Rewind();
    for (int i = 0; i < 256; ++i)
      out.PutF("<PROPERTY name=\"%s\" size=\"%d\">", "serial-number", i);
    benchmark::DoNotOptimize(out.pTail());
  }
  state.SetItemsProcessed(state.iterations() * 256);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          out.ReadAvailable());
}
BENCHMARK(BM_PutF);

void BM_Indent(benchmark::State &state) {
  utility::BufferStream out(kBufferSize);
  out.setSilentTruncation(true);
  for (auto _ : state) {
    out.Rewind();
    for (int i = 0; i < 256; ++i)
      out.Indent(i & 31);
    benchmark::DoNotOptimize(out.pTail());
  }
}
BENCHMARK(BM_Indent);

} // namespace
