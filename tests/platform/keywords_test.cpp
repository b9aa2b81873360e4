// The keyword repository against its source file.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <utility>

namespace {

TEST(Keywords, EveryKeywordRoundTrips) {
  std::ifstream in(QEL_SOURCE_DIR "/platform/keywords.txt");
  std::set<unsigned> tokens;
  std::set<std::string> texts;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    std::istringstream fields(line);
    unsigned token = 0;
    std::string text;
    fields >> token >> text;
    SCOPED_TRACE(text);
    EXPECT_TRUE(tokens.insert(token).second) << "token twice";
    EXPECT_TRUE(texts.insert(text).second) << "keyword twice";
    EXPECT_TRUE(token >= 1 && token <= 7626) << token;
    EXPECT_EQ(static_cast<unsigned>(strings::GS.toToken(text.c_str())), token);
    const char *back = strings::GS.toString(token);
    EXPECT_EQ(back ? std::string(back) : "(null)", text);
  }
  ASSERT_GT(tokens.size(), 1000u);
  for (unsigned t = 0; t <= 7630; ++t) // tokens the source does not list are unknown
    EXPECT_EQ(strings::GS.toString(t) != nullptr, tokens.count(t) == 1) << t;
}

// Other services store tokens: these must keep their numbers.
TEST(Keywords, FixedTokensAndUnknownTexts) {
  const std::pair<unsigned, const char *> fixed[] = {
      {90, "volumes"},    {2718, "events"},   {33, "pool-hist-statistics"}, {3562, "storage-pools"},
      {1153, "none"},     {2076, "auto"},     {367, "Entity"},    {1113, "tag"},
      {1115, "xml2"},     {1116, "console"},  {1117, "json"},     {2059, "api"},
      {3266, "xml2-brief"}, {3267, "json-alt"}, {3268, "api-brief"}, {2063, "english"},
      {2072, "korean"}};
  for (const auto &[token, text] : fixed) {
    EXPECT_STREQ(strings::GS.toString(token), text);
    EXPECT_EQ(static_cast<unsigned>(strings::GS.toToken(text)), token) << text;
  }
  for (const char *text : {"", "Volumes", "volumes ", "no-such-keyword", "-", (const char *)0})
    EXPECT_EQ(strings::GS.toToken(text), tGS_NoToken) << (text ? text : "null");
}

} // namespace
