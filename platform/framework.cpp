// Framework core: exceptions, the logger's sink and the counting allocator.
#include <qel/platform/framework.h>
#include <qel/platform/internal.h>
#ifdef QEL_TEST_HOOKS
#include <qel/platform/testing.h>
#endif

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

namespace framework {

namespace {
char *copyText(const char *text) {
  if (!text)
    text = "";
  const std::size_t size = std::strlen(text) + 1;
  char *copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}
} // namespace

Exception::Exception(unsigned code, const char *file, int line,
                     const char *function, const char *message, bool flag)
    : m_code(code), m_file(copyText(file)), m_line(line),
      m_function(copyText(function)), m_message(copyText(message)),
      m_flag(flag) {}

Exception::~Exception() {
  delete[] m_file;
  delete[] m_function;
  delete[] m_message;
}

// --- Logger ---------------------------------------------------------------

namespace {

const char *routeName(LogRecord::Route route) {
  switch (route) {
  case LogRecord::Route::Log:
    return "log";
  case LogRecord::Route::Error:
    return "error";
  case LogRecord::Route::Debug:
    return "debug";
  case LogRecord::Route::Assert:
    return "assert";
  }
  return "log";
}

// One line per record on stderr; a trailing newline of the message is not
// doubled. Debug records are dropped: debug lines are only wanted when a
// sink is installed to collect them.
void defaultSink(const LogRecord &record, void *) {
  if (record.route == LogRecord::Route::Debug)
    return;
  std::size_t len = std::strlen(record.text);
  while (len > 0 && record.text[len - 1] == '\n')
    --len;
  if (record.function)
    std::fprintf(stderr, "qel %s[%d] %s:%d: %.*s\n", routeName(record.route),
                 record.type, record.function, record.line,
                 static_cast<int>(len), record.text);
  else
    std::fprintf(stderr, "qel %s[%d]: %.*s\n", routeName(record.route),
                 record.type, static_cast<int>(len), record.text);
}

// The sink is shared by all threads. A caller copies it under the lock and
// calls it outside, so a sink may itself log or replace the sink without
// deadlocking.
std::mutex sinkMutex;
Logger::Sink currentSink{defaultSink, nullptr};

} // namespace

Logger::Sink Logger::setSink(Sink sink) {
  if (!sink.function)
    sink = Sink{defaultSink, nullptr};
  std::lock_guard<std::mutex> lock(sinkMutex);
  const Sink previous = currentSink;
  currentSink = sink;
  return previous;
}

void Logger::emit(const LogRecord &record) {
  Sink sink;
  {
    std::lock_guard<std::mutex> lock(sinkMutex);
    sink = currentSink;
  }
  sink.function(record, sink.context);
}

void Logger::StaticLog(int type, const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  platform_detail::emitv(LogRecord::Route::Log, type, nullptr, 0, fmt, args);
  va_end(args);
}

void Logger::StaticLogMethod(int type, const char *function, int line,
                             const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  platform_detail::emitv(LogRecord::Route::Log, type, function, line, fmt,
                         args);
  va_end(args);
}

// --- Memory ---------------------------------------------------------------

namespace {

std::atomic<long> liveBlocks{0};
std::atomic<long> allocCalls{0};

#ifdef QEL_TEST_HOOKS
// Allocations still to succeed before the injected failure; -1 = off.
std::atomic<long> failCountdown{-1};
std::atomic<bool> failPersistent{false};

bool injectFailure() {
  long n = failCountdown.load(std::memory_order_relaxed);
  while (n >= 0) {
    if (n == 0) {
      if (failPersistent.load(std::memory_order_relaxed))
        return true;
      if (failCountdown.compare_exchange_weak(n, -1))
        return true;
      continue;
    }
    if (failCountdown.compare_exchange_weak(n, n - 1))
      return false;
  }
  return false;
}
#else
constexpr bool injectFailure() { return false; }
#endif

} // namespace

void *Memory::StaticAlloc(std::size_t size) {
  allocCalls.fetch_add(1, std::memory_order_relaxed);
  if (injectFailure())
    return nullptr;
  void *block = std::malloc(size ? size : 1);
  if (block)
    liveBlocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void Memory::StaticFree(void *block) {
  if (!block)
    return;
  liveBlocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(block);
}

char *Memory::StaticStrdup(const char *text) {
  if (!text)
    return nullptr;
  std::size_t len = std::strlen(text);
  char *copy = static_cast<char *>(StaticAlloc(len + 1));
  if (copy)
    std::memcpy(copy, text, len + 1);
  return copy;
}

#ifdef QEL_TEST_HOOKS
void testing::setFailAfter(long n, bool persistent) {
  failPersistent.store(persistent, std::memory_order_relaxed);
  failCountdown.store(n < 0 ? -1 : n, std::memory_order_relaxed);
}
#endif

long Memory::liveAllocations() {
  return liveBlocks.load(std::memory_order_relaxed);
}

long Memory::totalAllocations() {
  return allocCalls.load(std::memory_order_relaxed);
}

} // namespace framework

namespace platform_detail {

std::string vformat(const char *fmt, va_list args) {
  char stackBuf[512];
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(stackBuf, sizeof stackBuf, fmt ? fmt : "", copy);
  va_end(copy);
  if (n < 0)
    return std::string();
  if (static_cast<std::size_t>(n) < sizeof stackBuf)
    return std::string(stackBuf, static_cast<std::size_t>(n));
  std::string out(static_cast<std::size_t>(n), '\0');
  std::vsnprintf(&out[0], out.size() + 1, fmt, args);
  return out;
}

void emitv(framework::LogRecord::Route route, int type, const char *function,
           int line, const char *fmt, va_list args) {
  const std::string text = vformat(fmt, args);
  framework::LogRecord record{route, type, function, line, text.c_str()};
  framework::Logger::emit(record);
}

} // namespace platform_detail
