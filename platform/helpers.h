// Formatting and string helpers of the platform, and the platform's
// name-length limits.
#ifndef QEL_PLATFORM_HELPERS_H
#define QEL_PLATFORM_HELPERS_H

#include <qel/platform/export.h>
#include <qel/platform/user.h>

#include <cstddef>
#include <cstdint>

/// Formats a byte count as a number text and a units text.
///
/// Base 10 divides by 1000 with the units B, KB, MB, GB, TB, PB; base 2 (any
/// other base counts as 10) divides by 1024 with B, KiB, MiB, GiB, TiB, PiB.
/// UNITS_AUTO picks the largest unit in which the value is at least 1
/// (B below one kilo, and for 0); UNITS_KB..UNITS_TB force their unit. The
/// number is "%.*f" with \p precision decimals.
///
/// \p number receives at most 20 bytes and \p unitsText at most 8, NUL
/// included: when a number would not fit, fewer decimals are printed.
QEL_API void getSizeString(std::uint64_t bytes,
                           services::user::Preferences::StorageUnit units,
                           std::uint8_t precision, int base, char *number,
                           char *unitsText);

/// getSizeString without printf: writes the number text to \p number (at
/// most 19 characters, no NUL) and returns its length; \p unitsText gets the
/// NUL-terminated units text. Same bytes as getSizeString, at a fraction of
/// its cost, for the per-cell paths.
QEL_API int formatSize(std::uint64_t bytes, services::user::Preferences::StorageUnit units,
                       std::uint8_t precision, int base, char *number, char *unitsText);

/// Two upper-case hex digits per byte of \p bytes, then a NUL (n <= 0: "").
/// \p out holds 2 * n + 1 bytes.
QEL_API void HexToCharString(char *out, const unsigned char *bytes, int n);

/// Removes leading and trailing white space in place; returns \p text.
QEL_API char *stripLeadingTrailingWhiteSpace(char *text);

namespace utility {
class QEL_API Misc {
public:
  /// Copies \p src to \p dst with '"' as \", '\' as \\, newline as \n and
  /// carriage return as \r. \p dst holds 2 * (strlen(src) + 1) bytes.
  static void escapeDoubleQuotes(char *dst, const char *src);
};
} // namespace utility

namespace services {
namespace dom {
/// Name-length limits of the data-object model.
struct QEL_API Constants {
  static const int MaxArrayNameLength;  ///< vdisk, pool and snap-pool names
  static const int MaxVolumeNameLength; ///< volume and snapshot names
};
} // namespace dom
} // namespace services

/// snprintf that never overruns \p size bytes; a truncated result is
/// reported through assertEngOnly. Returns the length written.
QEL_API int snprintfAssert(char *dst, std::size_t size, const char *fmt, ...)
    QEL_PRINTF(3, 4);
/// Copies at most size - 1 bytes of \p src and a NUL (null src: "");
/// a longer source is reported through assertEngOnly. Returns \p dst.
QEL_API char *strcpyAssert(char *dst, const char *src, std::size_t size);
/// Sets min(n, size) bytes of \p dst to \p c; n > size is reported through
/// assertEngOnly. Returns \p dst.
QEL_API void *memsetAssert(void *dst, int c, std::size_t n, std::size_t size);

#endif
