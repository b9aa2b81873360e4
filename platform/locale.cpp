// Thread locale, localization switch and message catalogue.
#include <qel/platform/locale.h>

#include <atomic>
#include <cstring>

namespace {

thread_local int threadLocale = 0;
std::atomic<bool> l10nEnabled{true};

// "N/A" by thread-locale index: English, Spanish, French, German, Italian,
// Japanese, Dutch, Simplified Chinese, Traditional Chinese, Korean.
const char *const kNotAvailable[10] = {
    "N/A", "N/D", "N/D", "k. A.", "N/D", "該当なし", "n.v.t.", "不适用", "不適用", "해당 없음",
};

} // namespace

int getThreadLocale() { return threadLocale; }

void setThreadLocale(int index) {
  threadLocale = (index >= 0 && index < 10) ? index : 0;
}

const char *mc_gettext(const char *message) {
  if (message && std::strcmp(message, "N/A") == 0)
    return kNotAvailable[threadLocale];
  return message;
}

namespace services {
namespace capi {
bool isL10NEnabled() { return l10nEnabled.load(std::memory_order_relaxed); }
void setL10NEnabled(bool enabled) {
  l10nEnabled.store(enabled, std::memory_order_relaxed);
}
} // namespace capi
} // namespace services
