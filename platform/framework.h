// The service framework's core: exceptions, the logger with its one sink, and
// the memory allocator that owns every block the library allocates.
#ifndef QEL_PLATFORM_FRAMEWORK_H
#define QEL_PLATFORM_FRAMEWORK_H

#include <qel/platform/export.h>

#include <cstddef>

namespace framework {

/// An error raised by the framework. Thrown by pointer (`throw new
/// Exception(...)`); whoever catches it owns it and deletes it.
class QEL_API Exception {
public:
  /// \p file, \p function and \p message are copied; null reads as "".
  /// The meaning of \p flag is the framework's; it is kept as given.
  Exception(unsigned code, const char *file, int line, const char *function,
            const char *message, bool flag);
  virtual ~Exception();
  Exception(const Exception &) = delete;
  Exception &operator=(const Exception &) = delete;

  unsigned code() const { return m_code; }
  const char *file() const { return m_file; }
  int line() const { return m_line; }
  const char *function() const { return m_function; }
  const char *message() const { return m_message; }
  bool flag() const { return m_flag; }

private:
  unsigned m_code;
  char *m_file;     ///< owned copies
  int m_line;
  char *m_function;
  char *m_message;
  bool m_flag;
};

/// One diagnostic, as handed to the sink. Every logging function of the
/// platform (the logger, logErrorPrint, logDebugPrint, assertEngOnly) formats
/// its message and produces exactly one record.
struct LogRecord {
  enum class Route { Log, Error, Debug, Assert } route;
  int type;             ///< log type of Logger calls; 0 for the other routes
  const char *function; ///< function text of StaticLogMethod, else null
  int line;             ///< source line of StaticLogMethod, else 0
  const char *text;     ///< the formatted message, valid during the call
};

/// The framework logger. All diagnostics go through one replaceable sink.
class QEL_API Logger {
public:
  /// A sink: a function and the context it is called with.
  struct Sink {
    void (*function)(const LogRecord &record, void *context) = nullptr;
    void *context = nullptr;
  };

  /// Logs a formatted message with a log type (0 for errors a caller should
  /// never cause, 3 for trace lines).
  static void StaticLog(int type, const char *fmt, ...) QEL_PRINTF(2, 3);
  /// As StaticLog, naming the function and source line that log.
  static void StaticLogMethod(int type, const char *function, int line,
                              const char *fmt, ...) QEL_PRINTF(4, 5);

  /// Replaces the sink and returns the previous one. A sink without a
  /// function restores the default, which writes one line per record to
  /// stderr and drops Debug records. Safe to call from any thread; a record
  /// being emitted on another thread may still reach the previous sink.
  static Sink setSink(Sink sink);
  /// As above, from a function and its context.
  static Sink setSink(void (*function)(const LogRecord &, void *), void *context = nullptr) {
    return setSink(Sink{function, context});
  }

  /// Hands one record to the current sink.
  static void emit(const LogRecord &record);
};

/// The framework allocator: the C heap, with a live-block count. Thread-safe.
/// (The test build adds fault injection: see tests/support/fail_alloc.h.)
class QEL_API Memory {
public:
  /// Allocates \p size bytes (at least one); null on failure.
  static void *StaticAlloc(std::size_t size);
  /// Releases a block from StaticAlloc; null is ignored.
  static void StaticFree(void *block);
  /// A copy of \p text in a block from StaticAlloc; null when \p text is null
  /// or the allocation fails.
  static char *StaticStrdup(const char *text);

  /// Number of blocks currently allocated through StaticAlloc.
  static long liveAllocations();
  /// Number of StaticAlloc calls so far, failed ones included.
  static long totalAllocations();
};

} // namespace framework

#endif
