// The keyword repository: lookups both ways and the tokens other services
// store.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <utility>

namespace {

// Every keyword the repository knows maps back to its token; past the last
// token nothing is known. Other services store tokens: the fixed ones (which
// also show that the round trip saw keywords) must keep their numbers.
TEST(Keywords, RoundTripsFixedTokensAndUnknownTexts) {
  for (unsigned t = 0; t <= 7630; ++t) {
    const char *text = strings::GS.toString(t);
    EXPECT_TRUE(!text || static_cast<unsigned>(strings::GS.toToken(text)) == t) << text;
  }
  const std::pair<unsigned, const char *> fixed[] = {
      {90, "volumes"}, {2718, "events"}, {33, "pool-hist-statistics"}, {3562, "storage-pools"}, {1153, "none"},
      {2076, "auto"}, {367, "Entity"}, {1113, "tag"}, {1115, "xml2"}, {1116, "console"}, {1117, "json"},
      {2059, "api"}, {3266, "xml2-brief"}, {3267, "json-alt"}, {3268, "api-brief"}, {2063, "english"},
      {2072, "korean"}, {0, nullptr}, {7627, nullptr}};
  for (const auto &[token, text] : fixed)
    EXPECT_STREQ(strings::GS.toString(token), text) << token;
  for (const char *text : {"", "Volumes", "volumes ", "no-such-keyword", "-", (const char *)0})
    EXPECT_EQ(strings::GS.toToken(text), tGS_NoToken) << (text ? text : "null");
}

} // namespace
