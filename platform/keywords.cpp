// Lookups of the keyword repository over the generated tables.
#include <qel/platform/keywords.h>

#include <cstdint>
#include <cstring>

namespace strings {

namespace detail {
// Generated: texts indexed by token, and an open-addressing table of tokens
// hashed by text (FNV-1a, linear probing, 0 = empty slot).
extern const char *const kTokenText[StringRepository::kMaxToken + 1];
extern const std::uint16_t kHashSlots[4096];
} // namespace detail

const StableStringRepository GS;

const char *StringRepository::toString(unsigned token) const {
  if (token == 0 || token > kMaxToken)
    return nullptr;
  return detail::kTokenText[token];
}

GS_TokenValues StableStringRepository::toToken(const char *text) const {
  if (!text)
    return tGS_NoToken;
  std::uint32_t hash = 2166136261u;
  for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text);
       *p; ++p)
    hash = (hash ^ *p) * 16777619u;
  constexpr std::uint32_t mask = 4096 - 1;
  for (std::uint32_t i = hash & mask;; i = (i + 1) & mask) {
    unsigned token = detail::kHashSlots[i];
    if (token == 0)
      return tGS_NoToken;
    if (std::strcmp(detail::kTokenText[token], text) == 0)
      return static_cast<GS_TokenValues>(token);
  }
}

} // namespace strings
