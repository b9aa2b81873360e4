// The keyword repository against its source file: every keyword round-trips,
// and the tokens other services store are the ones they expect.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Keyword {
  unsigned token;
  std::string text;
};

std::vector<Keyword> readSource() {
  std::ifstream in(QEL_SOURCE_DIR "/platform/keywords.txt");
  std::vector<Keyword> out;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    std::istringstream fields(line);
    Keyword k;
    fields >> k.token >> k.text;
    out.push_back(k);
  }
  return out;
}

TEST(Keywords, EveryKeywordRoundTrips) {
  auto keywords = readSource();
  ASSERT_GT(keywords.size(), 1000u);
  std::set<unsigned> tokens;
  std::set<std::string> texts;
  for (const auto &k : keywords) {
    SCOPED_TRACE(k.text);
    EXPECT_TRUE(tokens.insert(k.token).second) << "token twice";
    EXPECT_TRUE(texts.insert(k.text).second) << "keyword twice";
    EXPECT_GE(k.token, 1u);
    EXPECT_LE(k.token, 7626u);
    EXPECT_EQ(static_cast<unsigned>(strings::GS.toToken(k.text.c_str())),
              k.token);
    const char *back = strings::GS.toString(k.token);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(std::string(back), k.text);
  }
  // Tokens the source does not list are unknown.
  for (unsigned t = 0; t <= 7630; ++t) {
    if (!tokens.count(t)) {
      EXPECT_EQ(strings::GS.toString(t), nullptr) << t;
    }
  }
}

TEST(Keywords, FixedTokens) {
  struct Case {
    unsigned token;
    const char *text;
  } cases[] = {
      {90, "volumes"},         {169, "drives"},
      {2718, "events"},        {2707, "cli-parameters"},
      {2743, "replication-image"}, {2701, "advanced-settings-table"},
      {7390, "degraded-disk-policy"}, {33, "pool-hist-statistics"},
      {3562, "storage-pools"}, {1153, "none"},
      {2076, "auto"},          {367, "Entity"},
      {1113, "tag"},           {1115, "xml2"},
      {1116, "console"},       {1117, "json"},
      {2059, "api"},           {3266, "xml2-brief"},
      {3267, "json-alt"},      {3268, "api-brief"},
      {2063, "english"},       {2072, "korean"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_STREQ(strings::GS.toString(c.token), c.text);
    EXPECT_EQ(static_cast<unsigned>(strings::GS.toToken(c.text)), c.token);
  }
  static_assert(tGSvolumes == 90, "basetype token");
  static_assert(tGSserial_2Dnumber > 0, "identifier spelling of '-'");
  static_assert(tGSfru_5Fserialnumber > 0, "identifier spelling of '_'");
  static_assert(tGSnone == 1153, "no-keyword token");
}

TEST(Keywords, ExportedTexts) {
  EXPECT_STREQ(pGSQel, "Qel");
  EXPECT_STREQ(pGSReady, "Ready");
  EXPECT_STREQ(pGSEntity, "Entity");
  EXPECT_STREQ(pGSdurable_2Did, "durable-id");
  // toString hands out the exported arrays themselves.
  EXPECT_EQ(strings::GS.toString(tGSQel), pGSQel);
}

TEST(Keywords, UnknownTexts) {
  const char *cases[] = {"", "Volumes", "volumes ", "no-such-keyword", "-"};
  for (const char *text : cases)
    EXPECT_EQ(strings::GS.toToken(text), tGS_NoToken) << text;
  EXPECT_EQ(strings::GS.toToken(nullptr), tGS_NoToken);
}

} // namespace
