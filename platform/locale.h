// Locales: the locale codes, the calling thread's locale, the localization
// switch and the small message catalogue of the platform.
#ifndef QEL_PLATFORM_LOCALE_H
#define QEL_PLATFORM_LOCALE_H

#include <qel/platform/export.h>

#include <cstdint>

/// The ten locales; the values are the locales' keyword tokens. The nine
/// non-English locales are consecutive from LOCALE_ES.
enum LocaleCode : std::uint32_t {
  LOCALE_EN = 2063,
  LOCALE_ES = 2064,
  LOCALE_FR = 2065,
  LOCALE_DE = 2066,
  LOCALE_IT = 2067,
  LOCALE_JP = 2068,
  LOCALE_NL = 2069,
  LOCALE_ZH_CHS = 2070,
  LOCALE_ZH_CHT = 2071,
  LOCALE_KO = 2072,
};

/// The thread-locale index of a locale: its place in the LocaleCode order,
/// LOCALE_EN being 0.
constexpr int localeIndex(LocaleCode locale) { return static_cast<int>(locale - LOCALE_EN); }

/// The calling thread's locale as an index 0..9 (localeIndex); 0 until the
/// thread sets one.
QEL_API int getThreadLocale();
/// Sets the calling thread's locale index; values outside 0..9 become 0.
QEL_API void setThreadLocale(int index);

/// A message in the calling thread's locale. The catalogue holds "N/A" in
/// all ten locales; any other message (and null) is returned unchanged.
QEL_API const char *mc_gettext(const char *message);

namespace services {
namespace capi {
/// Whether labels are localized; true until switched off. Process-wide.
QEL_API bool isL10NEnabled();
QEL_API void setL10NEnabled(bool enabled);
} // namespace capi
} // namespace services

#endif
