// Paged against whole-table printing: 100,000 volumes rows filled and
// printed in every output type, either as one descriptor (QEL_Print_Data)
// or in pages of 4,096 rows (QEL_PrintOpen / QEL_PrintPage / QEL_PrintClose).
// Each iteration fills as well as prints, since a paged print holds only one
// page of filled rows. Output goes to /dev/null through a file stream, as the
// qel front end writes it. Peak RSS is measured once per case in a child
// process, so one case's heap does not hide another's.
#include "support/bench_support.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace {

using services::user::Preferences;

constexpr int kPage = 4096;

// Fills and prints \p rows volumes rows into \p out, whole or in pages.
void job(services::user::Session &session, utility::PutStream &out, int rows, bool paged) {
  char text[64];
  if (!paged) {
    QEL_DESC *d = qelbench::volumes(&session, rows);
    QEL_Print_Data(d, &session, out, false, false, nullptr);
    QEL_Free(d);
    return;
  }
  QEL_PRINT *print = QEL_PrintOpen(&session, out, false, false, nullptr);
  for (int first = 0; first < rows; first += kPage) {
    const int count = std::min(kPage, rows - first);
    QEL_DESC *d = QEL_Create(&session, tGSvolumes, tGSvolume, count, 0);
    for (int r = 0; r < count; ++r)
      qelbench::fillVolumeRow(&session, d, r, text);
    QEL_PrintPage(print, d);
    QEL_Free(d);
  }
  QEL_PrintClose(print);
}

// Peak resident set of one run of \p work in a child process, in MB.
template <typename F> double peakRssMb(F work) {
  const pid_t pid = fork();
  if (pid == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  if (pid < 0 || wait4(pid, &status, 0, &usage) != pid)
    return -1;
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void BM_PagedVsWhole(benchmark::State &state) {
  qelbench::start();
  const auto type = static_cast<Preferences::OutputType>(state.range(0));
  const bool paged = state.range(1) != 0;
  const int rows = static_cast<int>(state.range(2));
  const int fd = open("/dev/null", O_WRONLY);
  utility::FileStream out(fd, 64 * 1024);
  services::user::Session session(out);
  session.getPreferences().setOutputFormat(type);
  session.getContext().setScreenWidth(200);
  state.counters["peakRSS_MB"] = peakRssMb([&] { job(session, out, rows, paged); });
  for (auto _ : state) {
    job(session, out, rows, paged);
    out.FlushOutputStream();
  }
  state.SetItemsProcessed(state.iterations() * rows);
  state.SetLabel(std::string(strings::GS.toString(type)) + (paged ? " paged" : " whole"));
  close(fd);
}
BENCHMARK(BM_PagedVsWhole)
    ->ArgsProduct({{Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API,
                    Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2,
                    Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
                    Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG},
                   {0, 1},
                   {1000, 100000}})
    ->Unit(benchmark::kMillisecond);

} // namespace
