// Test support: collects the records of the platform's log sink.
#ifndef QEL_TESTS_SUPPORT_LOG_CAPTURE_H
#define QEL_TESTS_SUPPORT_LOG_CAPTURE_H

#include <qel/platform/testing.h>
#include <qel/qel.h>

#include <string>
#include <vector>

namespace qeltest {

/// Installs a collecting sink for its lifetime and restores the previous
/// sink afterwards.
class LogCapture {
public:
  using Route = framework::LogRecord::Route;
  /// A record as the sink saw it, its text copied.
  struct Record {
    Route route;
    int type;
    const char *function;
    int line;
    std::string text;
  };

  LogCapture() : previous_(framework::Logger::setSink(collect, this)) {}
  ~LogCapture() { framework::Logger::setSink(previous_); }
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  /// The texts of the records on \p route, in order.
  std::vector<std::string> texts(Route route) const {
    std::vector<std::string> out;
    for (const auto &r : records)
      if (r.route == route)
        out.push_back(r.text);
    return out;
  }
  /// Every record as its route's initial (L, E, D, A), a space and its text.
  std::vector<std::string> all() const {
    std::vector<std::string> out;
    for (const auto &r : records)
      out.push_back("LEDA"[static_cast<int>(r.route)] + (" " + r.text));
    return out;
  }
  void clear() { records.clear(); }

  std::vector<Record> records;

private:
  static void collect(const framework::LogRecord &r, void *self) {
    static_cast<LogCapture *>(self)->records.push_back({r.route, r.type, r.function, r.line, r.text});
  }
  framework::Logger::Sink previous_;
};

} // namespace qeltest

#endif
