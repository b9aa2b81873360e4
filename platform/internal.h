// Internal header of the platform layer: not installed, not part of the
// library's interface.
#ifndef QEL_PLATFORM_INTERNAL_H
#define QEL_PLATFORM_INTERNAL_H

#include <qel/platform/framework.h>

#include <cstdarg>
#include <string>

namespace platform_detail {

/// printf-style formatting into a std::string.
std::string vformat(const char *fmt, va_list args);

/// Formats and emits one record on \p route.
void emitv(framework::LogRecord::Route route, int type, const char *function,
           int line, const char *fmt, va_list args);

} // namespace platform_detail

#endif
