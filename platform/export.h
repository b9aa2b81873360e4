// Visibility of the library's exported surface.
//
// The library is built with hidden visibility; every declaration that other
// programs may use is marked QEL_API, so the exported surface is exactly what
// the headers mark.
#ifndef QEL_PLATFORM_EXPORT_H
#define QEL_PLATFORM_EXPORT_H

#define QEL_API __attribute__((visibility("default")))

#if defined(__GNUC__)
#define QEL_PRINTF(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#define QEL_PRINTF(fmtIndex, firstArg)
#endif

#endif
