// Cell formatting: every column type in normal and numeric form, the JSON
// escaping path, the bounds messages and allocation per print.
#include "support/fixture_tables.h"

#include <cstdlib>
#include <ctime>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using services::user::Preferences;

// Any renderer formats cells the same way.
using Formatter = ConsoleRenderer;

class Format : public qeltest::SessionTest {
protected:
  static void SetUpTestSuite() {
    SessionTest::SetUpTestSuite();
    setenv("TZ", "UTC", 1);
    tzset();
  }
  void SetUp() override {
    SessionTest::SetUp();
    d_ = own(QEL_Create(&session_, tGSspares, tGSnone, 3, 0));
  }
  void TearDown() override {
    SessionTest::TearDown();
    setThreadLocale(0);
  }
  // The text of cell (row, column); \p numericText gets the numeric stream.
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

  QEL_DESC *d_ = nullptr;
};

TEST_F(Format, EveryTypeInBothForms) {
  const std::uint8_t wwn[8] = {0x50, 0x0c, 0x00, 0xff, 0xaa, 0xbb, 0xcc, 0xdd};
  struct Case {
    std::uint32_t number;
    const void *text; // for the columns that hold texts
    const char *normal, *numeric;
    bool companion; // a "-numeric" companion in the documents
  } cases[19] = {
      {0x10a, nullptr, "0a", "0a", false}, // HEX8 keeps the word; prints 8 bits
      {255, nullptr, "000000ff", "000000ff", false},
      {0x1ff, nullptr, "255", "255", false},   // U8
      {0xffffffff, nullptr, "-1", "-1", false}, // U32: a signed conversion
      {0, "  disk  ", "disk", "  disk  ", false},
      {0, nullptr, "", "", false}, // a nested table
      {2, nullptr, "2.00", "2.00", false},
      {1, nullptr, "Degraded", "1", true},
      {7, nullptr, "7", "7", false},
      {0, "18446744073709551615", "18446744073709551615", "18446744073709551615", false},
      {0xfffffffb, nullptr, "-5", "-5", false},
      {0, wwn, "500C00FF", "500C00FF", false}, // size 8: 4 bytes
      {0x1ffff, nullptr, "65535", "65535", false}, // U16
      {0, " SEAGATE", "SEAGATE", " SEAGATE", false},
      {0, "N/A", "N/A", "N/A", true},
      {1700000000, nullptr, "2023-11-14 22:13:20", "1700000000", true},
      {3661, nullptr, "01:01:01", "3661", true},
      {Preferences::OUTPUT_JSON, nullptr, "json", "5", true},
      {0, "2048", "1.05MB", "1048576", true},
  };
  for (int c = 0; c < 19; ++c) {
    if (cases[c].text)
      QEL_FillColumn(&session_, d_, c, 0, cases[c].text);
    else
      QEL_FillColumn(&session_, d_, c, 0, cases[c].number);
  }
  QEL_FillColumnQEL(&session_, d_, 5, 0, QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0));
  Formatter f(&session_);
  for (int c = 0; c < 19; ++c) {
    SCOPED_TRACE("column " + std::to_string(c));
    std::string units;
    EXPECT_EQ(format(c, false, 0, &units), cases[c].normal);
    EXPECT_EQ(units, c == 18 ? "units=\"MB\"" : "");
    EXPECT_EQ(format(c, true, 0, &units), cases[c].numeric);
    EXPECT_EQ(units, "");
    EXPECT_EQ(f.isNumericColumn(d_, c), cases[c].companion);
  }
}

TEST_F(Format, EmptyCellsAndNotAvailable) {
  LogCapture log;
  d_->numRows = 1; // nothing filled
  const char *expected[19] = {"00", "00000000", "0", "0", "", "", "0.00", "OK", "0", "",
                              "0",  "",         "0", "",  "N/A", "N/A", "N/A", "", "N/A"};
  for (int c = 0; c < 19; ++c)
    EXPECT_EQ(format(c, false), expected[c]) << c;
  EXPECT_EQ(format(14, true), "");
  EXPECT_EQ(format(18, true), "");
  EXPECT_EQ(format(15, true), "0");
  // The null placeholder of a hex string shows blank.
  QEL_FillColumnHexString(&session_, d_, 11, 1, nullptr);
  EXPECT_EQ(format(11, false, 1), "");
  EXPECT_EQ(format(11, true, 1), "");
  // "N/A" follows the thread's locale, and a stored localized text reads as
  // "N/A" too.
  setThreadLocale(3);
  EXPECT_EQ(format(15, false), "k. A.");
  QEL_FillColumnBlocks(&session_, d_, 14, 1, "k. A.");
  EXPECT_EQ(format(14, false, 1), "k. A.");
}

TEST_F(Format, JsonEscapesTexts) {
  QEL_FillColumnString(&session_, d_, 4, 0, " say \"hi\"\\now\n\r\t ");
  QEL_FillColumnStringN(&session_, d_, 13, 0, "a\"b\"c\"d\"");
  for (auto type : {Preferences::OUTPUT_JSON, Preferences::OUTPUT_JSON_ALT}) {
    session_.getPreferences().setOutputFormat(type);
    EXPECT_EQ(format(4, false), "say \\\"hi\\\"\\\\now\\n\\r");
    EXPECT_EQ(format(4, true), " say \"hi\"\\now\n\r\t ");
    EXPECT_EQ(format(13, false), "a\\\"b\\\"c\\\"d\\\"");
  }
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  EXPECT_EQ(format(4, false), "say \"hi\"\\now");
  // Escaping needs no memory of its own: it holds when allocation fails.
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_JSON);
  Formatter f(&session_);
  utility::BufferStream value(64), numeric(64);
  framework::testing::setFailAfter(0, true);
  f.FormatData(d_, 4, 0, value, numeric, false);
  framework::testing::setFailAfter(-1);
  EXPECT_STREQ(value.pTail(), "say \\\"hi\\\"\\\\now\\n\\r");
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

// Rendering allocates per print (the column plan) and per descriptor (the
// row-order array), never per row or per cell: the same table with 10 or
// 1000 rows costs the same.
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
  const long before = framework::Memory::totalAllocations();
  QEL_Print_Data(d, &session, out, false, false, nullptr);
  const long used = framework::Memory::totalAllocations() - before;
  QEL_Free(d);
  return used;
}

TEST(RenderAllocations, NonePerRowOrCell) {
  qeltest::startLibrary();
  using P = Preferences;
  for (auto type : {P::OUTPUT_CONSOLE, P::OUTPUT_API, P::OUTPUT_XML2_BRIEF, P::OUTPUT_JSON,
                    P::OUTPUT_TAG, P::OUTPUT_JSON_STD, P::OUTPUT_NDJSON, P::OUTPUT_CSV,
                    P::OUTPUT_TSV, P::OUTPUT_HTML})
    EXPECT_EQ(allocationsToRender(type, 10), allocationsToRender(type, 1000)) << type;
}

} // namespace
