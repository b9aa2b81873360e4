// Numeric codes of the user services' token settings.
#include <qel/platform/user.h>

#include <cstddef>

namespace services {
namespace user {

namespace {

// Position of \p token in \p codes, or -1.
template <std::size_t N>
long codeOf(unsigned token, const unsigned (&codes)[N]) {
  for (std::size_t i = 0; i < N; ++i)
    if (codes[i] == token)
      return static_cast<long>(i);
  return -1;
}

} // namespace

long Preferences::OutputTypeToNumeric(unsigned token) {
  static const unsigned codes[] = {OUTPUT_CONSOLE, OUTPUT_API,  OUTPUT_API_BRIEF,
                                   OUTPUT_XML2,    OUTPUT_XML2_BRIEF,
                                   OUTPUT_JSON,    OUTPUT_JSON_ALT, OUTPUT_TAG,
                                   OUTPUT_JSON_STD, OUTPUT_NDJSON,  OUTPUT_CSV,
                                   OUTPUT_TSV,     OUTPUT_HTML};
  return codeOf(token, codes);
}

long Preferences::OutputModeToNumeric(unsigned token) {
  static const unsigned codes[] = {tGSdisabled, tGSenabled};
  return codeOf(token, codes);
}

long Preferences::StorageUnitToNumeric(unsigned token) {
  static const unsigned codes[] = {UNITS_AUTO, UNITS_KB, UNITS_MB, UNITS_GB,
                                   UNITS_TB};
  return codeOf(token, codes);
}

long Preferences::TemperatureToNumeric(unsigned token) {
  static const unsigned codes[] = {tGScelsius, tGSfahrenheit};
  return codeOf(token, codes);
}

long User::ExperienceToNumeric(unsigned token) {
  static const unsigned codes[] = {tGSstandard, tGSadvanced, tGSdiagnostic};
  return codeOf(token, codes);
}

} // namespace user

namespace scheduler {

long TaskRepVol::SnapModeToNumeric(unsigned token) {
  static const unsigned codes[] = {tGSnew_2Dsnapshot, tGSlast_2Dsnapshot};
  return user::codeOf(token, codes);
}

} // namespace scheduler
} // namespace services
