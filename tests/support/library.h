// Test support: runs the library's start-up (QEL_Start) once per test
// process and keeps the log lines that it wrote.
#ifndef QEL_TESTS_SUPPORT_LIBRARY_H
#define QEL_TESTS_SUPPORT_LIBRARY_H

#include "support/internals.h"
#include "support/log_capture.h"

#include <mutex>
#include <string>
#include <vector>

namespace qeltest {

/// Start-up's log texts (route Log), in order.
inline std::vector<std::string> &startupLog() {
  static std::vector<std::string> texts;
  return texts;
}

inline void startLibrary() {
  static std::once_flag once;
  std::call_once(once, [] {
    LogCapture log;
    QEL_Start();
    startupLog() = log.texts(LogCapture::Route::Log);
  });
}

} // namespace qeltest

#endif
