// The session's defaults and the numeric codes of token settings.
#include <qel/qel.h>

#include <gtest/gtest.h>

namespace {

using services::user::Preferences;

TEST(Session, Defaults) {
  utility::BufferStream out(16);
  services::user::Session session(out);
  EXPECT_EQ(&session.getOutputStream(), &out);
  const Preferences &p = session.getPreferences();
  EXPECT_EQ(p.getOutputFormat(), Preferences::OUTPUT_CONSOLE);
  EXPECT_EQ(p.getLocale(), LOCALE_EN);
  EXPECT_EQ(p.getStorageSizeUnits(), Preferences::UNITS_AUTO);
  EXPECT_EQ(static_cast<unsigned>(p.getStorageSizeUnits()), 2076u);
  EXPECT_EQ(p.getStorageSizePrecision(), 2);
  EXPECT_EQ(p.getStorageSizeBase(), 10);
  EXPECT_EQ(session.getContext().getScreenWidth(), 80);

  session.getPreferences().setOutputFormat(Preferences::OUTPUT_JSON_ALT);
  session.getPreferences().setLocale(LOCALE_KO);
  session.getContext().setScreenWidth(132);
  EXPECT_EQ(session.getPreferences().getOutputFormat(), 3267u);
  EXPECT_EQ(session.getPreferences().getLocale(), 2072u);
  EXPECT_EQ(session.getContext().getScreenWidth(), 132);
}

TEST(Preferences, OutputTypesAreTheirTokens) {
  static_assert(Preferences::OUTPUT_TAG == 1113, "");
  static_assert(Preferences::OUTPUT_XML2 == 1115, "");
  static_assert(Preferences::OUTPUT_CONSOLE == 1116, "");
  static_assert(Preferences::OUTPUT_JSON == 1117, "");
  static_assert(Preferences::OUTPUT_API == 2059, "");
  static_assert(Preferences::OUTPUT_XML2_BRIEF == 3266, "");
  static_assert(Preferences::OUTPUT_JSON_ALT == 3267, "");
  static_assert(Preferences::OUTPUT_API_BRIEF == 3268, "");
  static_assert(LOCALE_EN == 2063 && LOCALE_KO == 2072, "");
}

TEST(Preferences, NumericCodes) {
  struct Case {
    long (*convert)(unsigned);
    unsigned token;
    long code;
  } cases[] = {
      {Preferences::OutputTypeToNumeric, Preferences::OUTPUT_CONSOLE, 0},
      {Preferences::OutputTypeToNumeric, Preferences::OUTPUT_TAG, 7},
      {Preferences::OutputTypeToNumeric, tGSvolumes, -1},
      {Preferences::OutputModeToNumeric, tGSenabled, 1},
      {Preferences::StorageUnitToNumeric, Preferences::UNITS_AUTO, 0},
      {Preferences::StorageUnitToNumeric, Preferences::UNITS_TB, 4},
      {Preferences::TemperatureToNumeric, tGSfahrenheit, 1},
      {services::user::User::ExperienceToNumeric, tGSdiagnostic, 2},
      {services::scheduler::TaskRepVol::SnapModeToNumeric, tGSlast_2Dsnapshot, 1},
      {services::scheduler::TaskRepVol::SnapModeToNumeric, 0, -1},
  };
  for (const auto &c : cases)
    EXPECT_EQ(c.convert(c.token), c.code) << c.token;
}

} // namespace
