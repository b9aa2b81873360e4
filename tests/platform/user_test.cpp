// The session's defaults and the numeric codes clients read for output types.
#include <qel/qel.h>

#include <gtest/gtest.h>

namespace {

using services::user::Preferences;

TEST(Session, Defaults) {
  utility::BufferStream out(16);
  services::user::Session session(out);
  EXPECT_EQ(&session.getOutputStream(), &out);
  const Preferences &p = session.getPreferences();
  EXPECT_EQ(p.getOutputFormat(), 1116u);     // console
  EXPECT_EQ(p.getLocale(), 2063u);           // english
  EXPECT_EQ(p.getStorageSizeUnits(), 2076u); // auto
  EXPECT_EQ(p.getStorageSizePrecision(), 2);
  EXPECT_EQ(p.getStorageSizeBase(), 10);
  EXPECT_EQ(session.getContext().getScreenWidth(), 80);
}

TEST(Preferences, OutputTypeCodesKeepTheirOrder) {
  const unsigned outputs[] = {Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API,
                              Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2,
                              Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
                              Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG,
                              Preferences::OUTPUT_JSON_STD, Preferences::OUTPUT_NDJSON,
                              Preferences::OUTPUT_CSV,      Preferences::OUTPUT_TSV,
                              Preferences::OUTPUT_HTML};
  for (long i = 0; i < 8; ++i)
    EXPECT_EQ(Preferences::OutputTypeToNumeric(outputs[i]), i) << outputs[i];
}

} // namespace
