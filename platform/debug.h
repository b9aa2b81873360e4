// Debug flags and the diagnostic print functions of the platform.
//
// Every function here formats its message and hands exactly one record to
// the framework logger's sink (framework::Logger::setSink), so tests can
// capture diagnostics by route and text.
#ifndef QEL_PLATFORM_DEBUG_H
#define QEL_PLATFORM_DEBUG_H

#include <qel/platform/export.h>

namespace utility {

/// The process's 8192 debug flags, one per category.
class QEL_API Debug {
public:
  static constexpr unsigned kCategories = 8192;

  /// True when the category's flag is set; false for categories above 8191.
  static bool isDebugOn(unsigned category);
  /// Sets or clears a category's flag; categories above 8191 are ignored.
  static void setDebugOn(unsigned category, bool on);
};

} // namespace utility

/// Same flags as utility::Debug::isDebugOn.
QEL_API bool IsDebugOn(unsigned category);

/// Reports bad data (route Error).
QEL_API void logErrorPrint(const char *fmt, ...) QEL_PRINTF(1, 2);

/// Emits a debug line (route Debug). Callers test IsDebugOn first; the
/// default sink drops debug records.
QEL_API void logDebugPrint(const char *fmt, ...) QEL_PRINTF(1, 2);

/// Engineering assertion: when \p condition is false, reports \p message
/// (route Assert) and returns. It never aborts.
QEL_API void assertEngOnly(bool condition, const char *message);

#endif
