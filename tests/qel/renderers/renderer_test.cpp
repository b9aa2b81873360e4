// Cell formatting: every column type in normal and numeric form, the JSON
// escaping path, the bounds messages, XML escaping and the companion rule.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using services::user::Preferences;

// A renderer whose only job is formatting.
class Formatter : public Renderer {
public:
  using Renderer::Renderer;
  void PrintTable(QEL_DESC *, int, int) override {}
};

class Format : public testing::Test {
protected:
  static void SetUpTestSuite() {
    qeltest::registerFixtureTables();
    setenv("TZ", "UTC", 1);
    tzset();
  }
  void SetUp() override { d_ = QEL_Create(&session_, tGSspares, tGSnone, 3, 0); }
  void TearDown() override {
    QEL_Free(d_);
    setThreadLocale(0);
  }
  // The text of cell (row, column), and what went to the numeric stream.
  std::string format(int column, bool numericForm, int row = 0,
                     std::string *numericText = nullptr) {
    Formatter f(&session_);
    utility::BufferStream value(7000), numeric(256);
    value.setSilentTruncation(true);
    f.FormatData(d_, column, row, value, numeric, numericForm);
    if (numericText)
      *numericText = numeric.pTail();
    return value.pTail();
  }

  utility::BufferStream out_{64};
  services::user::Session session_{out_};
  QEL_DESC *d_ = nullptr;
};

TEST_F(Format, EveryTypeInBothForms) {
  services::user::Session *s = &session_;
  QEL_FillColumn(s, d_, 0, 0, 0x10au);    // HEX8 stores the word; prints 8 bits
  QEL_FillColumnHex32(s, d_, 1, 0, 255);
  QEL_FillColumn(s, d_, 2, 0, 0x1ffu);    // U8
  QEL_FillColumnU32(s, d_, 3, 0, 0xffffffffu);
  QEL_FillColumnString(s, d_, 4, 0, "  disk  ");
  QEL_FillColumnDouble(s, d_, 6, 0, 2.75);
  QEL_FillColumnEnum(s, d_, 7, 0, 1);
  QEL_FillColumnIndex(s, d_, 8, 0, 7);
  QEL_FillColumnU64(s, d_, 9, 0, "18446744073709551615");
  QEL_FillColumnI32(s, d_, 10, 0, -5);
  const std::uint8_t wwn[8] = {0x50, 0x0c, 0x00, 0xff, 0xaa, 0xbb, 0xcc, 0xdd};
  QEL_FillColumnHexString(s, d_, 11, 0, wwn);
  QEL_FillColumn(s, d_, 12, 0, 0x1ffffu); // U16
  QEL_FillColumnStringN(s, d_, 13, 0, " SEAGATE");
  QEL_FillColumnBlocks(s, d_, 14, 0, "N/A");
  QEL_FillColumnDateTime(s, d_, 15, 0, 1700000000u);
  QEL_FillColumnTime(s, d_, 16, 0, 3661);
  QEL_FillColumnEnumToken(s, d_, 17, 0, Preferences::OUTPUT_JSON);
  QEL_FillColumnBlocks2Bytes(s, d_, 18, 0, "2048");
  QEL_DESC *nested = QEL_Create(s, tGSsnmp_2Dusers, tGSnone, 1, 0);
  QEL_FillColumnQEL(s, d_, 5, 0, nested);

  struct Case {
    int column;
    const char *normal, *numeric;
  } cases[] = {
      {0, "0a", "0a"},
      {1, "000000ff", "000000ff"},
      {2, "255", "255"},
      {3, "-1", "-1"}, // a signed conversion
      {4, "disk", "  disk  "},
      {5, "", ""},
      {6, "2.00", "2.00"},
      {7, "Degraded", "1"},
      {8, "7", "7"},
      {9, "18446744073709551615", "18446744073709551615"},
      {10, "-5", "-5"},
      {11, "500C00FF", "500C00FF"}, // size 8: 4 bytes
      {12, "65535", "65535"},
      {13, "SEAGATE", " SEAGATE"},
      {14, "N/A", "N/A"},
      {15, "2023-11-14 22:13:20", "1700000000"},
      {16, "01:01:01", "3661"},
      {17, "json", "5"},
      {18, "1.05MB", "1048576"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE("column " + std::to_string(c.column));
    std::string units;
    EXPECT_EQ(format(c.column, false, 0, &units), c.normal);
    EXPECT_EQ(units, c.column == 18 ? "units=\"MB\"" : "");
    EXPECT_EQ(format(c.column, true, 0, &units), c.numeric);
    EXPECT_EQ(units, "");
  }
}

TEST_F(Format, EmptyCellsAndNotAvailable) {
  d_->numRows = 1; // nothing filled
  const char *expected[19] = {"00", "00000000", "0", "0", "", "", "0.00", "OK", "0", "",
                              "0",  "",         "0", "",  "N/A", "N/A", "N/A", "", "N/A"};
  for (int c = 0; c < 19; ++c)
    EXPECT_EQ(format(c, false), expected[c]) << c;
  EXPECT_EQ(format(14, true), "");
  EXPECT_EQ(format(18, true), "");
  EXPECT_EQ(format(15, true), "0");
  // "N/A" follows the thread's locale, and a stored localized text reads as
  // "N/A" too.
  setThreadLocale(3);
  EXPECT_EQ(format(15, false), "k. A.");
  QEL_FillColumnBlocks(&session_, d_, 14, 1, "k. A.");
  EXPECT_EQ(format(14, false, 1), "k. A.");
}

TEST_F(Format, HexStringPlaceholderShowsBlank) {
  LogCapture log;
  QEL_FillColumnHexString(&session_, d_, 11, 0, nullptr);
  EXPECT_EQ(format(11, false), "");
  EXPECT_EQ(format(11, true), "");
}

TEST_F(Format, StorageSizesFollowThePreferences) {
  QEL_FillColumnBlocks(&session_, d_, 14, 0, "2048");
  std::string units;
  session_.getPreferences().setStorageSizeBase(2);
  EXPECT_EQ(format(14, false, 0, &units), "1.00MiB");
  EXPECT_EQ(units, "units=\"MiB\"");
  session_.getPreferences().setStorageSizeUnits(Preferences::UNITS_KB);
  session_.getPreferences().setStorageSizePrecision(0);
  EXPECT_EQ(format(14, false), "1024KiB");
  EXPECT_EQ(format(14, true), "2048");
}

TEST_F(Format, JsonEscapesDoubleQuotesInTexts) {
  QEL_FillColumnString(&session_, d_, 4, 0, " say \"hi\"\\now\n ");
  QEL_FillColumnStringN(&session_, d_, 13, 0, "a\"b\"c\"d\"");
  for (auto type : {Preferences::OUTPUT_JSON, Preferences::OUTPUT_JSON_ALT}) {
    session_.getPreferences().setOutputFormat(type);
    EXPECT_EQ(format(4, false), "say \\\"hi\\\"\\\\now\\n");
    EXPECT_EQ(format(4, true), " say \"hi\"\\now\n ");
    EXPECT_EQ(format(13, false), "a\\\"b\\\"c\\\"d\\\"");
  }
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  EXPECT_EQ(format(4, false), "say \"hi\"\\now");
}

TEST_F(Format, JsonWithoutEscapeScratchWritesTheTextUnescaped) {
  QEL_FillColumnString(&session_, d_, 4, 0, " \"q\" ");
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_JSON);
  Formatter f(&session_);
  utility::BufferStream value(64), numeric(64);
  framework::Memory::setFailAfter(0);
  f.FormatData(d_, 4, 0, value, numeric, false);
  framework::Memory::setFailAfter(-1);
  EXPECT_STREQ(value.pTail(), "\"q\"");
}

TEST_F(Format, BadArgumentsAreLoggedAndLeaveTheValueEmpty) {
  LogCapture log;
  Formatter f(&session_);
  utility::BufferStream value(64), numeric(64);
  value.PutS("stale");
  f.FormatData(d_, 0, 3, value, numeric, false); // row == maxRows
  EXPECT_STREQ(value.pTail(), "");
  value.PutS("stale");
  f.FormatData(d_, 19, 0, value, numeric, false);
  f.FormatData(nullptr, 0, 0, value, numeric, false);
  EXPECT_STREQ(value.pTail(), "");
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"FormatData - max rows exceeded\n",
                                      "FormatData - max cols exceeded\n",
                                      "FormatData - pDesc is NULL\n"}));
}

TEST(ConvertBuffer, EscapesTheFiveSpecialCharacters) {
  struct Case {
    const char *in, *out;
  } cases[] = {{"a<b&", "a&lt;b&amp;"},
               {"\"'<>&", "&quot;&apos;&lt;&gt;&amp;"},
               {"plain text", "plain text"},
               {"", ""},
               {"日本 & ü", "日本 &amp; ü"}};
  for (const auto &c : cases) {
    utility::BufferStream out(128);
    Renderer::convertBuffer(out, c.in);
    EXPECT_STREQ(out.pTail(), c.out);
  }
  utility::BufferStream out(8);
  Renderer::convertBuffer(out, nullptr);
  EXPECT_STREQ(out.pTail(), "");
}

TEST_F(Format, NumericCompanions) {
  Formatter f(&session_);
  for (int c = 0; c < 19; ++c) {
    bool expected = c == 7 || c == 17 || c == 15 || c == 16 || c == 14 || c == 18;
    EXPECT_EQ(f.isNumericColumn(d_, c), expected) << c;
  }
}

TEST(RendererSettings, FromTheSessionOrTheDefaults) {
  utility::BufferStream out(16), other(16);
  services::user::Session session(out);
  Preferences &p = session.getPreferences();
  p.setOutputFormat(Preferences::OUTPUT_XML2);
  p.setStorageSizeUnits(Preferences::UNITS_GB);
  p.setStorageSizePrecision(3);
  p.setStorageSizeBase(2);
  p.setLocale(LOCALE_FR);
  session.getContext().setScreenWidth(0);
  Formatter a(&session);
  EXPECT_EQ(a.outputStream, &out);
  EXPECT_EQ(a.outputFormat, Preferences::OUTPUT_XML2);
  EXPECT_EQ(a.storageSizeUnits, Preferences::UNITS_GB);
  EXPECT_EQ(a.storageSizePrecision, 3);
  EXPECT_EQ(a.storageSizeBase, 2);
  EXPECT_EQ(a.locale, LOCALE_FR);
  EXPECT_EQ(a.screenWidth, 80) << "a width below 1 reads as 80";
  EXPECT_EQ(a.objectId, 0);
  session.getContext().setScreenWidth(132);
  Formatter b(&session, other);
  EXPECT_EQ(b.outputStream, &other);
  EXPECT_EQ(b.screenWidth, 132);
  Formatter c(other);
  EXPECT_EQ(c.outputFormat, Preferences::OUTPUT_API);
  EXPECT_EQ(static_cast<unsigned>(c.storageSizeUnits), 2076u);
  EXPECT_EQ(c.storageSizePrecision, 2);
  EXPECT_EQ(c.storageSizeBase, 10);
  EXPECT_EQ(c.screenWidth, 80);
  EXPECT_EQ(c.locale, LOCALE_EN);
}

} // namespace

namespace {

// Rendering allocates per descriptor (the row-order array), never per row
// or per cell: the same chain with 10 or 1000 rows costs the same.
long allocationsToRender(Preferences::OutputType type, int rows) {
  utility::BufferStream out(1 << 22);
  services::user::Session session(out);
  session.getPreferences().setOutputFormat(type);
  QEL_DESC *d = QEL_Create(&session, tGSvolumes, tGSvolume_2Dname, rows, 0);
  for (int r = 0; r < rows; ++r) {
    QEL_FillColumnString(&session, d, 3, r, ("vol" + std::to_string(r)).c_str());
    QEL_FillColumnBlocks(&session, d, 4, r, "2048");
    QEL_FillColumnEnum(&session, d, 37, r, 0);
  }
  long before;
  if (type == Preferences::OUTPUT_CONSOLE) {
    ConsoleRenderer r(&session);
    before = framework::Memory::totalAllocations();
    r.PrintTable(d, 0, 0);
  } else {
    XMLRenderer r(&session);
    before = framework::Memory::totalAllocations();
    r.PrintTable(d, 0, 0);
  }
  long used = framework::Memory::totalAllocations() - before;
  QEL_Free(d);
  return used;
}

TEST(RenderAllocations, NonePerRowOrCell) {
  qeltest::registerFixtureTables();
  for (auto type : {Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API,
                    Preferences::OUTPUT_XML2_BRIEF}) {
    EXPECT_EQ(allocationsToRender(type, 10), 1) << type;
    EXPECT_EQ(allocationsToRender(type, 1000), 1) << type;
  }
}

} // namespace
