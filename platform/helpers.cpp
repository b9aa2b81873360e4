// Formatting and string helpers.
#include <qel/platform/debug.h>
#include <qel/platform/helpers.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace services {
namespace dom {
const int Constants::MaxArrayNameLength = 20;
const int Constants::MaxVolumeNameLength = 32;
} // namespace dom
} // namespace services

int formatSize(std::uint64_t bytes, services::user::Preferences::StorageUnit units,
               std::uint8_t precision, int base, char *number, char *unitsText) {
  using services::user::Preferences;
  static const char *const kDecimal[] = {"B", "KB", "MB", "GB", "TB", "PB"};
  static const char *const kBinary[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB"};
  const bool binary = base == 2;
  const double step = binary ? 1024.0 : 1000.0;

  int unit = 0;
  switch (units) {
  case Preferences::UNITS_KB:
    unit = 1;
    break;
  case Preferences::UNITS_MB:
    unit = 2;
    break;
  case Preferences::UNITS_GB:
    unit = 3;
    break;
  case Preferences::UNITS_TB:
    unit = 4;
    break;
  default: {
    // Largest unit in which the value is at least 1, counted in integers so
    // that exact powers land in the higher unit.
    const std::uint64_t k = binary ? 1024 : 1000;
    std::uint64_t scaled = bytes;
    while (unit < 5 && scaled >= k) {
      scaled /= k;
      ++unit;
    }
    break;
  }
  }
  double value = static_cast<double>(bytes);
  for (int i = 0; i < unit; ++i)
    value /= step;

  // std::to_chars in fixed notation writes exactly what "%.*f" writes. At
  // most 19 characters: drop decimals rather than overrun the caller.
  char text[24 + 256];
  int decimals = precision;
  int n = 0;
  for (;;) {
    n = static_cast<int>(
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr -
        text);
    if (n < 20 || decimals == 0)
      break;
    decimals = decimals > n - 19 ? decimals - (n - 19) : 0;
  }
  n = std::min(n, 19);
  std::memcpy(number, text, static_cast<std::size_t>(n));
  std::strcpy(unitsText, (binary ? kBinary : kDecimal)[unit]);
  return n;
}

void getSizeString(std::uint64_t bytes,
                   services::user::Preferences::StorageUnit units,
                   std::uint8_t precision, int base, char *number,
                   char *unitsText) {
  number[formatSize(bytes, units, precision, base, number, unitsText)] = '\0';
}

void HexToCharString(char *out, const unsigned char *bytes, int n) {
  static const char kDigits[] = "0123456789ABCDEF";
  for (int i = 0; i < n; ++i) {
    *out++ = kDigits[bytes[i] >> 4];
    *out++ = kDigits[bytes[i] & 0x0f];
  }
  *out = '\0';
}

char *stripLeadingTrailingWhiteSpace(char *text) {
  if (!text)
    return text;
  char *start = text;
  while (*start && std::isspace(static_cast<unsigned char>(*start)))
    ++start;
  std::size_t len = std::strlen(start);
  while (len > 0 && std::isspace(static_cast<unsigned char>(start[len - 1])))
    --len;
  if (start != text)
    std::memmove(text, start, len);
  text[len] = '\0';
  return text;
}

namespace utility {
void Misc::escapeDoubleQuotes(char *dst, const char *src) {
  for (; *src; ++src) {
    switch (*src) {
    case '"':
      *dst++ = '\\';
      *dst++ = '"';
      break;
    case '\\':
      *dst++ = '\\';
      *dst++ = '\\';
      break;
    case '\n':
      *dst++ = '\\';
      *dst++ = 'n';
      break;
    case '\r':
      *dst++ = '\\';
      *dst++ = 'r';
      break;
    default:
      *dst++ = *src;
    }
  }
  *dst = '\0';
}
} // namespace utility

int snprintfAssert(char *dst, std::size_t size, const char *fmt, ...) {
  if (!dst || size == 0) {
    assertEngOnly(false, "snprintfAssert: no room for the output");
    return 0;
  }
  va_list args;
  va_start(args, fmt);
  int n = std::vsnprintf(dst, size, fmt, args);
  va_end(args);
  if (n < 0) {
    dst[0] = '\0';
    return 0;
  }
  if (static_cast<std::size_t>(n) >= size) {
    assertEngOnly(false, "snprintfAssert: output truncated");
    return static_cast<int>(size - 1);
  }
  return n;
}

char *strcpyAssert(char *dst, const char *src, std::size_t size) {
  if (!dst || size == 0) {
    assertEngOnly(false, "strcpyAssert: no room for the copy");
    return dst;
  }
  if (!src)
    src = "";
  std::size_t len = std::strlen(src);
  if (len >= size) {
    assertEngOnly(false, "strcpyAssert: source too long");
    len = size - 1;
  }
  std::memcpy(dst, src, len);
  dst[len] = '\0';
  return dst;
}

void *memsetAssert(void *dst, int c, std::size_t n, std::size_t size) {
  if (n > size) {
    assertEngOnly(false, "memsetAssert: count exceeds the destination");
    n = size;
  }
  if (dst && n)
    std::memset(dst, c, n);
  return dst;
}
