// The service framework's core: exceptions, the logger with its one sink, and
// the memory allocator that owns every block the library allocates.
#ifndef QEL_PLATFORM_FRAMEWORK_H
#define QEL_PLATFORM_FRAMEWORK_H

#include <platform/export.h>

#include <cstddef>
#include <functional>
#include <string>

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

  unsigned code() const { return m_code; }
  const char *file() const { return m_file.c_str(); }
  int line() const { return m_line; }
  const char *function() const { return m_function.c_str(); }
  const char *message() const { return m_message.c_str(); }
  bool flag() const { return m_flag; }

private:
  unsigned m_code;
  std::string m_file;
  int m_line;
  std::string m_function;
  std::string m_message;
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
  std::string text;     ///< the formatted message, unchanged
};

/// The framework logger. All diagnostics go through one replaceable sink.
class QEL_API Logger {
public:
  using Sink = std::function<void(const LogRecord &)>;

  /// Logs a formatted message with a log type (0 for errors a caller should
  /// never cause, 3 for trace lines).
  static void StaticLog(int type, const char *fmt, ...) QEL_PRINTF(2, 3);
  /// As StaticLog, naming the function and source line that log.
  static void StaticLogMethod(int type, const char *function, int line,
                              const char *fmt, ...) QEL_PRINTF(4, 5);

  /// Replaces the sink and returns the previous one. An empty sink restores
  /// the default, which writes one line per record to stderr and drops
  /// Debug records. Safe to call from any thread.
  static Sink setSink(Sink sink);

  /// Hands one record to the current sink.
  static void emit(const LogRecord &record);
};

/// The framework allocator: the C heap, with a live-block count and fault
/// injection for tests. Thread-safe.
class QEL_API Memory {
public:
  /// Allocates \p size bytes (at least one); null on failure.
  static void *StaticAlloc(std::size_t size);
  /// Releases a block from StaticAlloc; null is ignored.
  static void StaticFree(void *block);
  /// A copy of \p text in a block from StaticAlloc; null when \p text is null
  /// or the allocation fails.
  static char *StaticStrdup(const char *text);

  /// Fault injection: the next \p n allocations succeed and the one after
  /// them fails (n = 0: the very next one); only that one, or every one from
  /// then on when \p persistent. A negative \p n turns injection off.
  static void setFailAfter(long n, bool persistent = false);
  /// Number of blocks currently allocated through StaticAlloc.
  static long liveAllocations();
  /// Number of StaticAlloc calls so far, failed ones included.
  static long totalAllocations();
};

} // namespace framework

#endif
