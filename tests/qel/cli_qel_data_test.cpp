// Cell filling: storage by type, limits, null texts, type mismatches,
// refills and width tracking.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using services::user::Preferences;

class Fill : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  void SetUp() override {
    baseline_ = framework::Memory::liveAllocations();
    d_ = QEL_Create(&session_, tGSspares, tGSnone, 4, 0);
    ASSERT_NE(d_, nullptr);
  }
  void TearDown() override {
    QEL_Free(d_);
    EXPECT_EQ(framework::Memory::liveAllocations(), baseline_) << "leaked blocks";
  }
  QEL_CELL cell(int row, int column) const { return d_->cells[row * d_->maxColumns + column]; }
  const char *text(int row, int column) const {
    return reinterpret_cast<const char *>(cell(row, column));
  }

  utility::BufferStream out_{64};
  services::user::Session session_{out_};
  QEL_DESC *d_ = nullptr;
  long baseline_ = 0;
};

TEST_F(Fill, NumbersAreStoredAsTheirWord) {
  services::user::Session *s = &session_;
  QEL_FillColumnHex8(s, d_, 0, 0, 200);
  QEL_FillColumnHex32(s, d_, 1, 0, 0xdeadbeef);
  QEL_FillColumnU8(s, d_, 2, 0, 255);
  QEL_FillColumnU32(s, d_, 3, 0, 4000000000u);
  QEL_FillColumnEnum(s, d_, 7, 0, 2);
  QEL_FillColumnIndex(s, d_, 8, 0, 17);
  QEL_FillColumnI32(s, d_, 10, 0, -5);
  QEL_FillColumnU16(s, d_, 12, 0, 65535);
  QEL_FillColumnDateTime(s, d_, 15, 0, 1700000000u);
  QEL_FillColumnTime(s, d_, 16, 0, 3661);
  QEL_FillColumnEnumToken(s, d_, 17, 0, Preferences::OUTPUT_JSON);
  const QEL_CELL expected[][2] = {{0, 200},  {1, 0xdeadbeef}, {2, 255},
                                  {3, 4000000000u}, {7, 2}, {8, 17},
                                  {10, 0xfffffffbu}, {12, 65535},
                                  {15, 1700000000u}, {16, 3661},
                                  {17, Preferences::OUTPUT_JSON}};
  for (const auto &e : expected)
    EXPECT_EQ(cell(0, static_cast<int>(e[0])), e[1]) << "column " << e[0];
  EXPECT_EQ(d_->numRows, 1);
}

TEST_F(Fill, DoublesAreCutTowardZeroAndSaturated) {
  struct Case {
    double value;
    QEL_CELL stored;
  } cases[] = {{2.75, 2},          {0.4, 0},          {-3.5, 0},
               {4294967295.9, 4294967295u}, {1e12, 4294967295u},
               {std::nan(""), 0},  {123456.999, 123456}};
  for (const auto &c : cases) {
    QEL_FillColumnDouble(&session_, d_, 6, 1, c.value);
    EXPECT_EQ(cell(1, 6), c.stored) << c.value;
  }
}

TEST_F(Fill, TextsAreOwnedCopies) {
  char source[] = "vol-0001";
  QEL_FillColumnString(&session_, d_, 4, 0, source);
  source[0] = 'X';
  EXPECT_STREQ(text(0, 4), "vol-0001");
  QEL_FillColumnU64(&session_, d_, 9, 0, "18446744073709551615");
  QEL_FillColumnBlocks(&session_, d_, 14, 0, "2048");
  QEL_FillColumnBlocks2Bytes(&session_, d_, 18, 0, "N/A");
  EXPECT_STREQ(text(0, 9), "18446744073709551615");
  EXPECT_STREQ(text(0, 14), "2048");
  EXPECT_STREQ(text(0, 18), "N/A");

  // Fixed-width fields: exactly `size` (8) bytes, then a NUL.
  QEL_FillColumnStringN(&session_, d_, 13, 0, "SEAGATE_X10");
  EXPECT_STREQ(text(0, 13), "SEAGATE_");
  const std::uint8_t wwn[8] = {0x50, 0x0c, 0x00, 0xff, 0x01, 0x00, 0x00, 0x7f};
  QEL_FillColumnHexString(&session_, d_, 11, 0, wwn);
  EXPECT_EQ(std::memcmp(text(0, 11), wwn, 8), 0);
  EXPECT_EQ(text(0, 11)[8], '\0');
  EXPECT_EQ(framework::Memory::liveAllocations(), baseline_ + 2 + 6);
}

TEST_F(Fill, RowsGrowToTheHighestFilled) {
  QEL_FillColumnU32(&session_, d_, 3, 3, 7);
  EXPECT_EQ(d_->numRows, 4);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 19; ++c)
      EXPECT_EQ(cell(r, c), 0u);
  QEL_FillColumnU32(&session_, d_, 3, 1, 7);
  EXPECT_EQ(d_->numRows, 4);
}

TEST_F(Fill, CellsOutsideTheTableAreRefused) {
  LogCapture log;
  QEL_FillColumnU32(&session_, d_, 3, 4, 1);   // row = maxRows
  QEL_FillColumnU32(&session_, d_, 19, 0, 1);  // column = maxColumns
  QEL_FillColumnString(&session_, d_, -1, 0, "x");
  QEL_FillColumnString(&session_, d_, 4, -2, "x");
  EXPECT_EQ(d_->numRows, 0);
  const std::vector<std::string> expected = {
      "QEL_FillColumn: table spares, column iops (3) exceeded maximum allowable rows/columns\n",
      "QEL_FillColumn: table spares, column ? (19) exceeded maximum allowable rows/columns\n",
      "QEL_FillColumn: table spares, column ? (-1) exceeded maximum allowable rows/columns\n",
      "QEL_FillColumn: table spares, column name (4) exceeded maximum allowable rows/columns\n"};
  EXPECT_EQ(log.texts(Route::Error), expected);
  // Each is also asserted; the fills outside the columns first report the
  // type they cannot find.
  std::vector<std::string> asserts = log.texts(Route::Assert);
  EXPECT_EQ(asserts,
            (std::vector<std::string>{
                expected[0],
                "Invalid QEL Type (U32) - got unknown for ? in table spares (19,0)",
                expected[1],
                "Invalid QEL Type (STRING) - got unknown for ? in table spares (-1,0)",
                expected[2], expected[3]}));

  // A descriptor without rows refuses every cell.
  QEL_DESC *empty = QEL_Create(&session_, tGSspares, tGSnone, 0, 0);
  QEL_FillColumnU32(&session_, empty, 3, 0, 1);
  EXPECT_EQ(empty->numRows, 0);
  QEL_Free(empty);
  log.clear();
  QEL_FillColumnU32(&session_, nullptr, 3, 0, 1);
  QEL_FillColumn(&session_, nullptr, 3, 0, 1u);
  EXPECT_TRUE(log.records.empty()) << "a null descriptor is ignored silently";
}

TEST_F(Fill, NullTextsGetAPlaceholder) {
  LogCapture log;
  QEL_FillColumnString(&session_, d_, 4, 0, nullptr);
  QEL_FillColumnStringN(&session_, d_, 13, 1, nullptr);
  QEL_FillColumnHexString(&session_, d_, 11, 1, nullptr);
  QEL_FillColumnU64(&session_, d_, 9, 2, nullptr);
  QEL_FillColumnBlocks(&session_, d_, 14, 2, nullptr);
  for (auto rc : {std::pair<int, int>{0, 4}, {1, 13}, {1, 11}, {2, 9}, {2, 14}})
    EXPECT_STREQ(text(rc.first, rc.second), " ");
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>{
                "QEL_FillColumn: COLTYPE_STRING. data=0 tableID=spares columnID=name col=4 row=0",
                "QEL_FillColumn: COLTYPE_STRING_N or HEX_STRING. data=0 tableID=spares columnID=vendor col=13 row=1",
                "QEL_FillColumn: COLTYPE_STRING_N or HEX_STRING. data=0 tableID=spares columnID=serial-number col=11 row=1",
                "QEL_FillColumn: COLTYPE_U64 or BLOCKS. data=0 tableID=spares columnID=number-of-reads col=9 row=2",
                "QEL_FillColumn: COLTYPE_U64 or BLOCKS. data=0 tableID=spares columnID=size col=14 row=2"}));
}

// Every typed operation on a column of another type reports its own message
// with the column's actual XML type name, then stores by the real type.
TEST_F(Fill, TypeMismatchesAreReported) {
  struct Case {
    void (*fill)(services::user::Session *, QEL_DESC *, int, int);
    int column;
    const char *message;
  } cases[] = {
      {[](auto s, auto d, int c, int r) { QEL_FillColumnHex8(s, d, c, r, 1); }, 3,
       "Invalid QEL Type (HEX8) - got uint32 for iops in table spares (3,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnHex32(s, d, c, r, 1); }, 2,
       "Invalid QEL Type (HEX32) - got uint8 for slot in table spares (2,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnU8(s, d, c, r, 1); }, 0,
       "Invalid QEL Type (U8) - got uint8 for drive-down-code in table spares (0,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnU32(s, d, c, r, 1); }, 10,
       "Invalid QEL Type (U32) - got sint32 for return-code in table spares (10,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnString(s, d, c, r, "12345678"); }, 13,
       "Invalid QEL Type (STRING) - got string for vendor in table spares (13,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnQEL(s, d, c, r, nullptr); }, 3,
       "Invalid QEL Type (QEL) - got uint32 for iops in table spares (3,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnDouble(s, d, c, r, 1); }, 3,
       "Invalid QEL Type (DOUBLE) - got uint32 for iops in table spares (3,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnEnum(s, d, c, r, 1); }, 17,
       "Invalid QEL Type (ENUM) - got string for output-format-api in table spares (17,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnEnumToken(s, d, c, r, 1); }, 7,
       "Invalid QEL Type (ENUMTOKEN) - got string for health in table spares (7,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnIndex(s, d, c, r, 1); }, 3,
       "Invalid QEL Type (INDEX) - got uint32 for iops in table spares (3,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnU64(s, d, c, r, "1"); }, 4,
       "Invalid QEL Type (U64) - got string for name in table spares (4,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnI32(s, d, c, r, 1); }, 3,
       "Invalid QEL Type (I32) - got uint32 for iops in table spares (3,0)"},
      {[](auto s, auto d, int c, int r) {
         static const std::uint8_t b[8] = {};
         QEL_FillColumnHexString(s, d, c, r, b);
       }, 4, "Invalid QEL Type (HEX_STRING) - got string for name in table spares (4,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnU16(s, d, c, r, 1); }, 6,
       "Invalid QEL Type (U16) - got double for cpu-load in table spares (6,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnStringN(s, d, c, r, "12345678"); }, 4,
       "Invalid QEL Type (STRING_N) - got string for name in table spares (4,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnBlocks(s, d, c, r, "1"); }, 18,
       "Invalid QEL Type (BLOCKS) - got string for data-read in table spares (18,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnBlocks2Bytes(s, d, c, r, "1"); }, 9,
       "Invalid QEL Type (BLOCKS2BYTES) - got uint64 for number-of-reads in table spares (9,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnDateTime(s, d, c, r, 1); }, 16,
       "Invalid QEL Type (DATETIME) - got string for time in table spares (16,0)"},
      {[](auto s, auto d, int c, int r) { QEL_FillColumnTime(s, d, c, r, 1); }, 15,
       "Invalid QEL Type (TIME) - got string for time-stamp in table spares (15,0)"},
  };
  for (const auto &c : cases) {
    LogCapture log;
    c.fill(&session_, d_, c.column, 0);
    EXPECT_EQ(log.texts(Route::Assert), std::vector<std::string>{c.message});
    EXPECT_EQ(d_->numRows, 1) << c.message;
  }
  // Stored by the real type: the U32 value went into the I32 column, the
  // STRING fill into the STRING_N column copied 8 bytes.
  EXPECT_EQ(cell(0, 10), 1u);
  EXPECT_STREQ(text(0, 13), "12345678");
  EXPECT_STREQ(text(0, 4), "12345678");
}

TEST_F(Fill, NumbersNeverBecomePointers) {
  LogCapture log;
  QEL_FillColumnU32(&session_, d_, 4, 0, 0x1234); // a STRING column
  EXPECT_EQ(d_->numRows, 0) << "reported and not stored";
  EXPECT_EQ(log.texts(Route::Assert).size(), 1u);
  QEL_FillColumn(&session_, d_, 14, 1, 77u); // generic: BLOCKS column
  EXPECT_EQ(cell(1, 14), 0u);
  EXPECT_EQ(log.texts(Route::Error).back(),
            "QEL_FillColumn: table spares, column size (14) holds string values; "
            "the number 77 is not stored");
  QEL_FillColumn(&session_, d_, 4, 2, 0); // 0 is a null pointer
  EXPECT_STREQ(text(2, 4), " ");
  // A pointer for a number column is stored as a number.
  static const char someText[] = "x";
  QEL_FillColumn(&session_, d_, 3, 3, static_cast<const void *>(someText));
  EXPECT_EQ(cell(3, 3), static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(someText)));
}

TEST_F(Fill, RefillsReleaseTheEarlierCopy) {
  QEL_FillColumnString(&session_, d_, 4, 0, "first");
  QEL_FillColumnBlocks(&session_, d_, 14, 0, "1");
  long live = framework::Memory::liveAllocations();
  QEL_FillColumnString(&session_, d_, 4, 0, "second");
  QEL_FillColumnBlocks(&session_, d_, 14, 0, "2");
  QEL_FillColumnStringN(&session_, d_, 13, 0, "ABCDEFGH");
  QEL_FillColumnStringN(&session_, d_, 13, 0, "IJKLMNOP");
  EXPECT_EQ(framework::Memory::liveAllocations(), live + 1);
  EXPECT_STREQ(text(0, 4), "second");

  QEL_DESC *a = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
  QEL_DESC *b = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
  QEL_FillColumnString(&session_, a, 1, 0, "a");
  QEL_FillColumnQEL(&session_, d_, 5, 0, a);
  QEL_FillColumnQEL(&session_, d_, 5, 0, a); // the same one again: kept
  EXPECT_STREQ(reinterpret_cast<const char *>(a->cells[1]), "a");
  QEL_FillColumnQEL(&session_, d_, 5, 0, b); // a is released
  EXPECT_EQ(cell(0, 5), reinterpret_cast<QEL_CELL>(b));
}

TEST_F(Fill, AllocationFailureKeepsTheCell) {
  LogCapture log;
  QEL_FillColumnString(&session_, d_, 4, 0, "kept");
  framework::Memory::setFailAfter(0);
  QEL_FillColumnString(&session_, d_, 4, 0, "lost");
  framework::Memory::setFailAfter(0);
  QEL_FillColumnStringN(&session_, d_, 13, 2, "ABCDEFGH");
  framework::Memory::setFailAfter(-1);
  EXPECT_STREQ(text(0, 4), "kept");
  EXPECT_EQ(cell(2, 13), 0u);
  EXPECT_EQ(d_->numRows, 3) << "the row count was raised before the copy";
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>(2, "QEL_FillColumn():: malloc failed")));
}

TEST_F(Fill, WidthTracking) {
  _QEL_COLUMN_DESC *col = d_->pColumns;
  QEL_FillColumnString(&session_, d_, 4, 0, "abc");
  QEL_FillColumnString(&session_, d_, 4, 1, "ab");
  EXPECT_EQ(col[4].width, 4);
  QEL_FillColumnU64(&session_, d_, 9, 0, "12345");
  EXPECT_EQ(col[9].width, 6);

  QEL_FillColumnBlocks(&session_, d_, 14, 0, "N/A");
  EXPECT_EQ(col[14].width, 0);
  QEL_FillColumnBlocks(&session_, d_, 14, 0, "2048"); // 1.05 + MB
  EXPECT_EQ(col[14].width, 6);
  session_.getPreferences().setStorageSizeBase(2); // 1.00 + MiB
  QEL_FillColumnBlocks2Bytes(&session_, d_, 18, 0, "2048");
  EXPECT_EQ(col[18].width, 7);
  session_.getPreferences().setStorageSizePrecision(0);
  session_.getPreferences().setStorageSizeUnits(Preferences::UNITS_KB);
  QEL_FillColumnBlocks(&session_, d_, 14, 1, "1"); // 0 + KiB: narrower, kept
  EXPECT_EQ(col[14].width, 6);

  QEL_FillColumnEnum(&session_, d_, 7, 0, 0); // OK
  EXPECT_EQ(col[7].width, 2);
  QEL_FillColumnEnum(&session_, d_, 7, 1, 99); // Unknown
  EXPECT_EQ(col[7].width, 7);
  QEL_FillColumnEnum(&session_, d_, 7, 2, 2); // Fault: narrower
  EXPECT_EQ(col[7].width, 7);
  QEL_FillColumnEnumToken(&session_, d_, 17, 0, Preferences::OUTPUT_TAG); // "7"
  EXPECT_EQ(col[17].width, 1);

  // Columns without width tracking never change.
  QEL_FillColumnU32(&session_, d_, 3, 0, 123456);
  QEL_FillColumnStringN(&session_, d_, 13, 0, "ABCDEFGH");
  EXPECT_EQ(col[3].width, 0);
  EXPECT_EQ(col[13].width, 0);
}

void longDecoder(utility::PutStream &out, unsigned int) {
  for (int i = 0; i < 600; ++i)
    out.PutC('x');
}

TEST_F(Fill, DecoderTextLongerThanTheScratchIsContained) {
  EnumDecoder saved = qeltest::typeTable[7].decoder;
  qeltest::typeTable[7].decoder = longDecoder;
  QEL_FillColumnEnum(&session_, d_, 7, 0, 1); // raises inside: no width, no throw
  qeltest::typeTable[7].decoder = saved;
  EXPECT_EQ(cell(0, 7), 1u);
  EXPECT_EQ(d_->numRows, 1);
  EXPECT_EQ(d_->pColumns[7].width, 0);
}

TEST_F(Fill, WidthIsKeptModulo256) {
  std::string wide(300, 'w');
  QEL_FillColumnString(&session_, d_, 4, 0, wide.c_str());
  EXPECT_EQ(d_->pColumns[4].width, 301 % 256);
}

} // namespace
