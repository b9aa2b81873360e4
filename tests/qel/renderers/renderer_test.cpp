// Cell formatting: every column type in normal and numeric form, filled and
// empty, the JSON escaping path, the bounds messages and allocation per print.
#include "support/fixture_tables.h"

#include <cstdlib>
#include <ctime>

namespace {

using qeltest::LogCapture;
using P = services::user::Preferences;

// Any renderer formats cells the same way.
using Formatter = ConsoleRenderer;

// Dates print in UTC whatever the machine's zone.
[[maybe_unused]] const bool kUtc = (setenv("TZ", "UTC", 1), tzset(), true);

class Format : public qeltest::SessionTest {
protected:
  void SetUp() override {
    SessionTest::SetUp();
    d_ = own(QEL_Create(&session_, tGSspares, tGSnone, 3, 0));
  }
  // The text of cell (row, column); \p numericText gets the numeric stream.
  std::string format(int column, bool numericForm, int row = 0, std::string *numericText = nullptr) {
    utility::BufferStream value(7000), numeric(256);
    value.setSilentTruncation(true);
    Formatter(&session_).FormatData(d_, column, row, value, numeric, numericForm);
    if (numericText)
      *numericText = numeric.pTail();
    return value.pTail();
  }

  QEL_DESC *d_ = nullptr;
};

TEST_F(Format, EveryTypeInBothFormsFilledAndEmpty) {
  const std::uint8_t wwn[8] = {0x50, 0x0c, 0x00, 0xff, 0xaa, 0xbb, 0xcc, 0xdd};
  const struct {
    std::uint32_t number;
    const void *text;                     // for the columns that hold texts
    const char *normal, *numeric, *empty; // empty: both forms of an unfilled cell
    bool companion;                       // a "-numeric" companion in the documents
  } cases[19] = {
      {0x10a, nullptr, "0a", "0a", "00", false}, // HEX8 keeps the word; prints 8 bits
      {255, nullptr, "000000ff", "000000ff", "00000000", false},
      {0x1ff, nullptr, "255", "255", "0", false},   // U8
      {0xffffffff, nullptr, "-1", "-1", "0", false}, // U32: a signed conversion
      {0, "  disk  ", "disk", "  disk  ", "", false},
      {0, nullptr, "", "", "", false}, // a nested table
      {2, nullptr, "2.00", "2.00", "0.00", false},
      {1, nullptr, "Degraded", "1", "OK|0", true},
      {7, nullptr, "7", "7", "0", false},
      {0, "18446744073709551615", "18446744073709551615", "18446744073709551615", "", false},
      {0xfffffffb, nullptr, "-5", "-5", "0", false},
      {0, wwn, "500C00FF", "500C00FF", "", false}, // size 8: 4 bytes
      {0x1ffff, nullptr, "65535", "65535", "0", false}, // U16
      {0, " SEAGATE", "SEAGATE", " SEAGATE", "", false},
      {0, "N/A", "N/A", "N/A", "N/A|", true},
      {1700000000, nullptr, "2023-11-14 22:13:20", "1700000000", "N/A|0", true},
      {3661, nullptr, "01:01:01", "3661", "N/A|0", true},
      {P::OUTPUT_JSON, nullptr, "json", "5", "|-1", true},
      {0, "2048", "1.05MB", "1048576", "N/A|", true},
  };
  for (int c = 0; c < 19; ++c)
    cases[c].text ? QEL_FillColumn(&session_, d_, c, 0, cases[c].text)
                  : QEL_FillColumn(&session_, d_, c, 0, cases[c].number);
  QEL_FillColumnQEL(&session_, d_, 5, 0, QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0));
  d_->numRows = 2; // row 1 stays unfilled
  Formatter f(&session_);
  LogCapture log;
  for (int c = 0; c < 19; ++c) {
    SCOPED_TRACE("column " + std::to_string(c));
    std::string units;
    EXPECT_EQ(format(c, false, 0, &units), cases[c].normal);
    EXPECT_EQ(units, c == 18 ? "units=\"MB\"" : "");
    EXPECT_EQ(format(c, true, 0, &units), cases[c].numeric);
    EXPECT_EQ(units, "");
    const std::string empty = cases[c].empty; // "normal|numeric" where they differ
    const std::size_t bar = empty.find('|');
    EXPECT_EQ(format(c, false, 1), empty.substr(0, bar));
    EXPECT_EQ(format(c, true, 1), bar == std::string::npos ? empty : empty.substr(bar + 1));
    EXPECT_EQ(f.isNumericColumn(d_, c), cases[c].companion);
  }
  // The null placeholder of a hex string shows blank. "N/A" follows the
  // thread's locale, and a stored localized text reads as "N/A" too.
  QEL_FillColumnHexString(&session_, d_, 11, 2, nullptr);
  QEL_FillColumnBlocks(&session_, d_, 14, 2, "k. A.");
  setThreadLocale(3);
  EXPECT_EQ((std::vector<std::string>{format(11, false, 2), format(11, true, 2), format(15, false, 1),
                                      format(14, false, 2)}),
            (std::vector<std::string>{"", "", "k. A.", "k. A."}));
  setThreadLocale(0);
  // Cells outside the table are logged and leave the value empty.
  utility::BufferStream value(64), numeric(64);
  const struct {
    QEL_DESC *d;
    int column, row;
  } bad[] = {{d_, 0, 3}, {d_, 19, 0}, {nullptr, 0, 0}}; // row == maxRows, column == maxColumns
  for (const auto &b : bad) {
    value.PutS("stale");
    f.FormatData(b.d, b.column, b.row, value, numeric, false);
    EXPECT_STREQ(value.pTail(), "") << b.column << ", " << b.row;
  }
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"FormatData - max rows exceeded\n", "FormatData - max cols exceeded\n",
                                      "FormatData - pDesc is NULL\n"}));
}

TEST_F(Format, JsonEscapesTexts) {
  QEL_FillColumnString(&session_, d_, 4, 0, " say \"hi\"\\now\n\r\t ");
  QEL_FillColumnStringN(&session_, d_, 13, 0, "a\"b\"c\"d\"");
  for (auto type : {P::OUTPUT_JSON, P::OUTPUT_JSON_ALT}) {
    session_.getPreferences().setOutputFormat(type);
    EXPECT_EQ(format(4, false), "say \\\"hi\\\"\\\\now\\n\\r");
    EXPECT_EQ(format(4, true), " say \"hi\"\\now\n\r\t ");
    EXPECT_EQ(format(13, false), "a\\\"b\\\"c\\\"d\\\"");
  }
  session_.getPreferences().setOutputFormat(P::OUTPUT_API);
  EXPECT_EQ(format(4, false), "say \"hi\"\\now");
}

// Rendering allocates per print (the column plan) and per descriptor (the
// row-order array), never per row or per cell: the same table with 10 or
// 1000 rows costs the same, escaped texts included.
TEST(RenderAllocations, NonePerRowOrCell) {
  qeltest::startLibrary();
  const auto allocations = [](P::OutputType type, int rows) {
    utility::BufferStream out(1 << 22);
    services::user::Session session(out);
    session.getPreferences().setOutputFormat(type);
    QEL_DESC *d = QEL_Create(&session, tGSvolumes, tGSvolume_2Dname, rows, 0);
    for (int r = 0; r < rows; ++r) {
      QEL_FillColumnString(&session, d, 3, r, ("vol \"<&>\" " + std::to_string(r)).c_str());
      QEL_FillColumnBlocks(&session, d, 4, r, "2048");
      QEL_FillColumnEnum(&session, d, 37, r, 0);
    }
    const long before = framework::Memory::totalAllocations();
    QEL_Print_Data(d, &session, out, false, false, nullptr);
    const long used = framework::Memory::totalAllocations() - before;
    QEL_Free(d);
    return used;
  };
  for (auto type : {P::OUTPUT_CONSOLE, P::OUTPUT_API, P::OUTPUT_API_BRIEF, P::OUTPUT_XML2, P::OUTPUT_XML2_BRIEF,
                    P::OUTPUT_JSON, P::OUTPUT_JSON_ALT, P::OUTPUT_TAG, P::OUTPUT_JSON_STD, P::OUTPUT_NDJSON,
                    P::OUTPUT_CSV, P::OUTPUT_TSV, P::OUTPUT_HTML})
    EXPECT_EQ(allocations(type, 10), allocations(type, 1000)) << type;
}

} // namespace
