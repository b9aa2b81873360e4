// Debug flags and the diagnostic print functions.
#include <qel/platform/debug.h>
#include <qel/platform/internal.h>

#include <atomic>
#include <cstdint>

namespace utility {

namespace {
// One bit per category. Flags are read on hot paths by many threads and set
// rarely; relaxed atomics keep that free of data races at no cost.
std::atomic<std::uint32_t> m_bits[Debug::kCategories / 32];
} // namespace

bool Debug::isDebugOn(unsigned category) {
  if (category >= kCategories)
    return false;
  return (m_bits[category / 32].load(std::memory_order_relaxed) >>
          (category % 32)) & 1u;
}

void Debug::setDebugOn(unsigned category, bool on) {
  if (category >= kCategories)
    return;
  std::uint32_t mask = 1u << (category % 32);
  if (on)
    m_bits[category / 32].fetch_or(mask, std::memory_order_relaxed);
  else
    m_bits[category / 32].fetch_and(~mask, std::memory_order_relaxed);
}

} // namespace utility

bool IsDebugOn(unsigned category) {
  return utility::Debug::isDebugOn(category);
}

void logErrorPrint(const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  platform_detail::emitv(framework::LogRecord::Route::Error, 0, nullptr, 0,
                         fmt, args);
  va_end(args);
}

void logDebugPrint(const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  platform_detail::emitv(framework::LogRecord::Route::Debug, 0, nullptr, 0,
                         fmt, args);
  va_end(args);
}

void assertEngOnly(bool condition, const char *message) {
  if (condition)
    return;
  framework::LogRecord record{framework::LogRecord::Route::Assert, 0, nullptr,
                              0, message ? message : ""};
  framework::Logger::emit(record);
}
