// Cell filling: storage by type, limits, null texts, type mismatches,
// refills and width tracking.
#include "support/fixture_tables.h"

#include <cmath>
#include <cstring>
#include <tuple>

namespace {

using qeltest::LogCapture;
using services::user::Preferences;
using Session = services::user::Session;

class Fill : public qeltest::SessionTest {
protected:
  void SetUp() override {
    SessionTest::SetUp();
    d_ = own(QEL_Create(&session_, tGSspares, tGSnone, 4, 0));
  }
  QEL_CELL cell(int row, int column) const { return d_->cells[row * d_->maxColumns + column]; }
  const char *text(int row, int column) const { return reinterpret_cast<const char *>(cell(row, column)); }
  QEL_DESC *d_ = nullptr;
};

const std::uint8_t kBytes[8] = {0x50, 0x0c, 0x00, 0xff, 0x01, 0x00, 0x00, 0x7f};
using FillOp = void (*)(Session *, QEL_DESC *, int, int);
#define OP(name, value)                                                                   \
  [](Session *s, QEL_DESC *d, int c, int r) { QEL_FillColumn##name(s, d, c, r, value); }

// Each typed operation stores into a column of its type without a report
// (numbers as their 32-bit word); on a column of another type it reports the
// column's actual XML type name, then stores by the real type.
TEST_F(Fill, TypedOperationsCheckTheColumnType) {
  // fill, its column, the number stored (0: a text), a column of another type, the report
  const std::tuple<FillOp, int, QEL_CELL, int, const char *> cases[] = {
      {OP(Hex8, 200), 0, 200, 3, "(HEX8) - got uint32 for iops"},
      {OP(Hex32, 0xdeadbeef), 1, 0xdeadbeef, 2, "(HEX32) - got uint8 for slot"},
      {OP(U8, 255), 2, 255, 0, "(U8) - got uint8 for drive-down-code"},
      {OP(U32, 4000000000u), 3, 4000000000u, 10, "(U32) - got sint32 for return-code"},
      {OP(String, "12345678"), 4, 0, 13, "(STRING) - got string for vendor"},
      {OP(QEL, nullptr), 5, 0, 3, "(QEL) - got uint32 for iops"},
      {OP(Double, 2.75), 6, 2, 3, "(DOUBLE) - got uint32 for iops"},
      {OP(Enum, 2), 7, 2, 17, "(ENUM) - got string for output-format-api"},
      {OP(Index, 17), 8, 17, 3, "(INDEX) - got uint32 for iops"},
      {OP(U64, "1"), 9, 0, 4, "(U64) - got string for name"},
      {OP(I32, -5), 10, 0xfffffffbu, 3, "(I32) - got uint32 for iops"},
      {OP(HexString, kBytes), 11, 0, 4, "(HEX_STRING) - got string for name"},
      {OP(U16, 65535), 12, 65535, 6, "(U16) - got double for cpu-load"},
      {OP(StringN, "SEAGATE_X10"), 13, 0, 4, "(STRING_N) - got string for name"},
      {OP(Blocks, "1"), 14, 0, 18, "(BLOCKS) - got string for data-read"},
      {OP(DateTime, 1700000000u), 15, 1700000000u, 16, "(DATETIME) - got string for time"},
      {OP(Time, 3661), 16, 3661, 15, "(TIME) - got string for time-stamp"},
      {OP(EnumToken, Preferences::OUTPUT_JSON), 17, Preferences::OUTPUT_JSON, 7, "(ENUMTOKEN) - got string for health"},
      {OP(Blocks2Bytes, "1"), 18, 0, 9, "(BLOCKS2BYTES) - got uint64 for number-of-reads"},
  };
  for (const auto &[fill, column, stored, other, message] : cases) {
    LogCapture log;
    fill(&session_, d_, column, 0);
    fill(&session_, d_, other, 1);
    EXPECT_EQ(stored ? cell(0, column) : 0, stored) << message;
    EXPECT_EQ(log.all(), std::vector<std::string>{std::string("A Invalid QEL Type ") + message +
                                                  " in table spares (" + std::to_string(other) + ",1)"});
  }
  EXPECT_EQ(d_->numRows, 2);
  // Stored by the real type: the U32 value into the I32 column, the STRING
  // fill into the STRING_N column as 8 bytes and the reverse in full. Fixed
  // fields are exactly `size` (8) bytes, then a NUL.
  EXPECT_EQ(cell(1, 10), 4000000000u);
  EXPECT_STREQ(text(1, 13), "12345678");
  EXPECT_STREQ(text(1, 4), "SEAGATE_X10");
  EXPECT_STREQ(text(0, 13), "SEAGATE_");
  EXPECT_EQ(std::memcmp(text(0, 11), kBytes, 8) || text(0, 11)[8], 0);
  // Doubles are cut toward zero and saturated.
  for (auto c : {std::pair<double, QEL_CELL>{0.4, 0}, {-3.5, 0}, {std::nan(""), 0},
                 {4294967295.9, 4294967295u}, {1e12, 4294967295u}, {123456.999, 123456}}) {
    QEL_FillColumnDouble(&session_, d_, 6, 1, c.first);
    EXPECT_EQ(cell(1, 6), c.second) << c.first;
  }
}

// A caller's descriptor offered to a cell; the caller keeps it.
void fillNewTable(Session *s, QEL_DESC *d, int c, int r) {
  QEL_DESC *mine = QEL_Create(s, tGSsnmp_2Dusers, tGSnone, 1, 0);
  QEL_FillColumnQEL(s, d, c, r, mine);
  QEL_Free(mine);
}

// Bad fills log exactly their records and store nothing, or " " for a null
// text. A number never becomes a pointer, nor a text a nested table, nor a
// descriptor a text. OP(, v) is the generic fill.
TEST_F(Fill, BadFillsLogAndStoreNothing) {
  const std::string type = "A Invalid QEL Type (", null = "E QEL_FillColumn: COLTYPE_";
  auto outside = [](const char *column, std::vector<std::string> log = {}) {
    const std::string text = std::string("QEL_FillColumn: table spares, column ") + column +
                             " exceeded maximum allowable rows/columns\n";
    log.insert(log.end(), {"E " + text, "A " + text});
    return log;
  };
  const std::string numberInText = "QEL_FillColumn: table spares, column size (14) holds string "
                                   "values; the number 77 is not stored";
  // fill, column, row, the text stored (null: nothing), the records
  const std::tuple<FillOp, int, int, const char *, std::vector<std::string>> cases[] = {
      {OP(U32, 1), 3, 4, nullptr, outside("iops (3)")},
      {OP(U32, 1), 19, 0, nullptr, outside("? (19)", {type + "U32) - got unknown for ? in table spares (19,0)"})},
      {OP(String, "x"), -1, 0, nullptr, outside("? (-1)", {type + "STRING) - got unknown for ? in table spares (-1,0)"})},
      {OP(String, "x"), 4, -2, nullptr, outside("name (4)")},
      {OP(String, nullptr), 4, 0, " ", {null + "STRING. data=0 tableID=spares columnID=name col=4 row=0"}},
      {OP(HexString, nullptr), 11, 1, " ",
       {null + "STRING_N or HEX_STRING. data=0 tableID=spares columnID=serial-number col=11 row=1"}},
      {OP(Blocks, nullptr), 14, 2, " ", {null + "U64 or BLOCKS. data=0 tableID=spares columnID=size col=14 row=2"}},
      {OP(, 0), 4, 1, " ", {null + "STRING. data=0 tableID=spares columnID=name col=4 row=1"}}, // not the highest row
      {OP(U32, 0x1234), 4, 3, nullptr, {type + "U32) - got string for name in table spares (4,3)"}},
      {OP(, 77u), 14, 0, nullptr, {"E " + numberInText, "A " + numberInText}},
      {OP(String, "x"), 5, 0, nullptr, {type + "STRING) - got object for unhealthy-component in table spares (5,0)"}},
      {fillNewTable, 4, 2, nullptr, {type + "QEL) - got string for name in table spares (4,2)"}},
  };
  for (const auto &[fill, column, row, stored, records] : cases) {
    LogCapture log;
    fill(&session_, d_, column, row);
    EXPECT_EQ(log.all(), records);
    if (column >= 0 && column < 19 && row >= 0 && row < 4) {
      EXPECT_EQ(stored ? text(row, column) : std::to_string(cell(row, column)), stored ? stored : "0")
          << "cell " << column << "," << row;
    }
  }
  EXPECT_EQ(d_->numRows, 3) << "refused fills leave the row count";
  // A null descriptor is ignored.
  LogCapture log;
  QEL_FillColumnU32(&session_, nullptr, 3, 0, 1);
  QEL_FillColumn(&session_, nullptr, 3, 0, 1u);
  EXPECT_TRUE(log.records.empty());
}

TEST_F(Fill, RefillsReplaceTheCellUnlessTheCopyFails) {
  LogCapture log;
  char source[] = "kept";
  QEL_FillColumnString(&session_, d_, 4, 0, source);
  source[0] = 'X'; // the cell holds a copy
  // A shorter text reuses the cell's copy; a long one needs new storage.
  QEL_FillColumnString(&session_, d_, 4, 1, "longer text");
  QEL_FillColumnString(&session_, d_, 4, 1, "short");
  EXPECT_STREQ(text(1, 4), "short");
  const std::string huge(5000, 'x');
  framework::testing::setFailAfter(0, true);
  QEL_FillColumnString(&session_, d_, 4, 0, huge.c_str());
  QEL_FillColumnString(&session_, d_, 4, 2, huge.c_str());
  framework::testing::setFailAfter(-1);
  EXPECT_STREQ(text(0, 4), "kept");
  EXPECT_EQ(cell(2, 4), 0u);
  EXPECT_EQ(d_->numRows, 3) << "the row count was raised before the copy";
  EXPECT_EQ(log.all(), std::vector<std::string>(2, "E QEL_FillColumn():: malloc failed"));
  // A nested table refilled with itself is kept; with another, released.
  QEL_DESC *a = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
  QEL_DESC *b = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
  QEL_FillColumnString(&session_, a, 1, 0, "a");
  QEL_FillColumnQEL(&session_, d_, 5, 0, a);
  QEL_FillColumnQEL(&session_, d_, 5, 0, a);
  EXPECT_STREQ(reinterpret_cast<const char *>(a->cells[1]), "a");
  QEL_FillColumnQEL(&session_, d_, 5, 0, b); // TearDown finds a leak if a stays
  EXPECT_EQ(cell(0, 5), reinterpret_cast<QEL_CELL>(b));
}

TEST_F(Fill, WidthTracking) {
  session_.getPreferences().setStorageSizeBase(2); // sizes in the session's base
  const std::tuple<FillOp, int, int, int> steps[] = { // fill, column, row, the width after it
      {OP(String, "abc"), 4, 0, 4},  {OP(String, "ab"), 4, 1, 4}, {OP(U64, "12345"), 9, 0, 6},
      {OP(Blocks, "N/A"), 14, 0, 0}, {OP(Blocks, "2048"), 14, 0, 7}, {OP(Blocks2Bytes, "2048"), 18, 0, 7}, // "1.00" "MiB"
      {OP(Enum, 0), 7, 0, 2},        {OP(Enum, 99), 7, 1, 7},     // "OK", "Unknown"
      {OP(Enum, 2), 7, 2, 7},                                      // "Fault": narrower
      {OP(EnumToken, Preferences::OUTPUT_TAG), 17, 0, 1},         // "7"
      {OP(U32, 123456), 3, 0, 0},    {OP(StringN, "ABCDEFGH"), 13, 0, 0}, // not tracked
  };
  for (const auto &[fill, column, row, width] : steps) {
    fill(&session_, d_, column, row);
    EXPECT_EQ(d_->pColumns[column].width, width) << "column " << column << ", row " << row;
  }
  // A decoder text longer than the 512-byte scratch leaves the width alone
  // (and throws nothing); the value is still stored.
  EnumDecoder saved = qeltest::typeTable[7].decoder;
  qeltest::typeTable[7].decoder = [](utility::PutStream &out, unsigned) { out.PutNChar(600, 'x'); };
  QEL_FillColumnEnum(&session_, d_, 7, 3, 1);
  qeltest::typeTable[7].decoder = saved;
  EXPECT_EQ(cell(3, 7), 1u);
  EXPECT_EQ(d_->pColumns[7].width, 7);
}

} // namespace
