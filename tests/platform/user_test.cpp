// The numeric codes clients read for output types.
#include <qel/qel.h>

#include <gtest/gtest.h>

namespace {

using services::user::Preferences;

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
