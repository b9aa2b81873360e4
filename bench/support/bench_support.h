// Benchmark support: library start-up, a filled volumes table, and a count
// of heap allocations (operator new and framework::Memory) for one untimed
// run of a piece of work.
#ifndef QEL_BENCH_SUPPORT_H
#define QEL_BENCH_SUPPORT_H

#include <qel/qel.h>
#include <qel/renderers/cli_ConsoleRenderer.h>
#include <qel/renderers/cli_JSONRenderer.h>
#include <qel/renderers/cli_TagRenderer.h>
#include <qel/renderers/cli_XMLRenderer.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace qelbench {

inline std::atomic<long> &newCalls() {
  static std::atomic<long> calls{0};
  return calls;
}

inline void start() {
  static bool started = [] {
    // Benchmarks measure output, not diagnostics: keep log lines (such as
    // the tag renderer's missing-element reports) off the terminal.
    framework::Logger::setSink([](const framework::LogRecord &, void *) {});
    init_FieldNames();
    init_LocaleFieldNames();
    initGSables();
    return true;
  }();
  (void)started;
}

/// Fills every column of row \p r of a volumes table the way a command
/// handler fills it (deterministic values). \p text is the caller's scratch.
inline void fillVolumeRow(services::user::Session *s, QEL_DESC *d, int r, char (&text)[64]) {
  for (int c = 0; c < d->numColumns; ++c) {
    switch (d->pColumns[c].pProperty->type) {
    case COLTYPE_STRING:
      std::snprintf(text, sizeof text, "%s-%06d", strings::GS.toString(d->pColumns[c].keywordId), r);
      QEL_FillColumnString(s, d, c, r, text);
      break;
    case COLTYPE_BLOCKS:
    case COLTYPE_U64:
      std::snprintf(text, sizeof text, "%d", 2097152 + 4096 * r);
      QEL_FillColumn(s, d, c, r, static_cast<const void *>(text));
      break;
    case COLTYPE_ENUM:
      QEL_FillColumnEnum(s, d, c, r, static_cast<unsigned>(r % 2));
      break;
    case COLTYPE_U32:
      QEL_FillColumnU32(s, d, c, r, static_cast<unsigned>(r));
      break;
    default:
      break;
    }
  }
}

/// A volumes table of \p rows rows, every column filled.
inline QEL_DESC *volumes(services::user::Session *s, int rows) {
  start();
  QEL_DESC *d = QEL_Create(s, tGSvolumes, tGSvolume, rows, 0);
  char text[64];
  for (int r = 0; r < rows; ++r)
    fillVolumeRow(s, d, r, text);
  return d;
}

/// Heap allocations (operator new plus framework::Memory) made by \p work.
template <typename F> long allocationsOf(F work) {
  long before = newCalls().load() + framework::Memory::totalAllocations();
  work();
  return newCalls().load() + framework::Memory::totalAllocations() - before;
}

} // namespace qelbench

#endif
