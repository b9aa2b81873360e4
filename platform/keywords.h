// The keyword repository: keyword tokens (GS_TokenValues) and their texts.
//
// The tokens and texts come from platform/keywords.txt, turned into C++ at
// build time: tGS<identifier> enumerators and pGS<identifier> character
// arrays, where the identifier is the keyword with "-" written _2D and "_"
// written _5F (tGSserial_2Dnumber, pGSQel).
#ifndef QEL_PLATFORM_KEYWORDS_H
#define QEL_PLATFORM_KEYWORDS_H

#include <qel/platform/export.h>
#include <qel/platform/gs_tokens.h>

namespace strings {

/// Token to text.
class QEL_API StringRepository {
public:
  static constexpr unsigned kMaxToken = 7626;

  constexpr StringRepository() {}
  /// The keyword text of \p token; null for a token the repository does not
  /// know (0 and tokens above 7626 included).
  const char *toString(unsigned token) const;
};

/// Token to text and text to token.
class QEL_API StableStringRepository : public StringRepository {
public:
  constexpr StableStringRepository() {}
  /// The token of a keyword text (exact, case-sensitive match); 0 for null
  /// or an unknown text. A hash lookup, not a scan.
  GS_TokenValues toToken(const char *text) const;
};

/// The process's keyword repository.
extern QEL_API const StableStringRepository GS;

} // namespace strings

#endif
