// Console tables, byte for byte: padding, wrapping, rules, every layout,
// nested tables, chains and the printed flag. The front end's golden files
// pin the column and pairs layouts of whole tables at widths 80 and 132.
#include "support/fixture_tables.h"

namespace {

using qeltest::LogCapture;

class Console : public qeltest::SessionTest {
protected:
  // A descriptor freed at the end of the test, room for two rows, texts in
  // row 0.
  QEL_DESC *texts(GS_TokenValues basetype, std::vector<const char *> row, std::uint8_t format = 0) {
    QEL_DESC *d = own(QEL_Create(&session_, basetype, tGSnone, 2, format));
    for (std::size_t c = 0; c < row.size(); ++c)
      QEL_FillColumnString(&session_, d, static_cast<int>(c), 0, row[c]);
    return d;
  }
  // Width 0 reads as 80.
  std::string print(QEL_DESC *d, int width = 0) {
    session_.getContext().setScreenWidth(width);
    out_.Rewind();
    ConsoleRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

const std::string kHeader = "Name       Slot   \n------------------\n";
const std::string kRule = "------------------";

// The nested table as the layouts print it, at indentation 2 or 3.
std::string nestedAt(const std::string &pad) {
  return pad + "Name       Slot   \n" + pad + "------------------\n" + pad + "n1         1\n";
}

TEST_F(Console, ColumnTablesChainsAndThePrintedFlag) {
  QEL_DESC *a = own(userRows({"alpha", "beta"}));
  EXPECT_EQ(print(a), kHeader + "alpha      1\nbeta       2\n" + kRule);
  EXPECT_EQ(print(a), "") << "printed once only";
  // A chain: no titles; an empty table still has its rules; a printed
  // descriptor is skipped without a newline.
  QEL_DESC *b = own(userRows({"x"}));
  QEL_link(b, userRows({}, tGSvolumes));
  EXPECT_EQ(print(b), kHeader + "x          1\n" + kRule + "\n" + kHeader + kRule);
  QEL_DESC *c = own(userRows({}));
  QEL_link(c, userRows({}));
  c->printed = 1;
  EXPECT_EQ(print(c), kHeader + kRule);
}

TEST_F(Console, WrapsBeforeAColumnThatReachesTheScreenWidth) {
  QEL_DESC *d = texts(tGSsnap_2Dshot_2Dparameters, {"a", "b"});
  const std::string head = "Name     Vendor   \n  Model    \n";
  // Width 18: the header is 18 long, so rules shrink to width - 1.
  EXPECT_EQ(print(d, 18), head + "-----------------\na        b        \n  \n-----------------");
  d->printed = 0;
  QEL_FillColumnString(&session_, d, 2, 0, "c");
  EXPECT_EQ(print(d, 20), head + kRule + "\na        b        \n  c\n" + kRule);
}

// "Timestamp" (9) widens its tracked column; "Description" keeps its full
// text over a column of size 3, so the columns no longer line up, and a value
// reaching width + 1 runs into the next one.
TEST_F(Console, HeadersLongerThanTheColumnAndWidthTracking) {
  QEL_DESC *d = texts(tGScopy_2Dvolume_2Dstatus, {"abcd", "xy"});
  QEL_FillColumnString(&session_, d, 0, 1, "ab");
  QEL_FillColumnString(&session_, d, 1, 1, "long text");
  QEL_FillColumnU32(&session_, d, 2, 0, 1);
  QEL_FillColumnU32(&session_, d, 2, 1, 22);
  const std::string rule(29, '-');
  EXPECT_EQ(print(d), "Timestamp Description Slot   \n" + rule + "\nabcd      xy  1\nab        long text22\n" + rule);
  EXPECT_EQ(d->pColumns[0].width, 9);
}

// The other layouts, each with a nested table; packed cuts values, status
// separates the first value unless its column is off.
TEST_F(Console, OtherLayouts) {
  const struct {
    std::uint8_t format;
    GS_TokenValues name;
    std::string expected;
  } cases[] = {
      {7, tGSnone, kHeader + "alpha      \n\n" + nestedAt("   ") + "7\nbeta       8\n" + kRule},
      {1, tGSvolumes, "Volumes\n-------\nName: alpha\n\n" + nestedAt("  ") +
                          "\nSlot: 7\n\nVolumes\n-------\nName: beta\n\nSlot: 8\n"},
      {2, tGSnone, "alpha \n" + nestedAt("   ") + "7 \nbeta 8 \n"},
      {3, tGSnone, "Managed Logs [Name (alpha) ] Unhealthy Component:\n\n" + nestedAt("   ") +
                       "Managed Logs [Slot (7) \nManaged Logs [Name (beta) ] Managed Logs [Slot (8) \n"},
      {4, tGSnone, "alpha      " + nestedAt("   ") + "7\nbeta       8\n"},
      {5, tGSnone, "alpha: \n" + nestedAt("   ") + "7\nbeta: 8\n"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(print(logRows(userRows({"n1"}), c.name, c.format)), c.expected) << int(c.format);
  EXPECT_EQ(print(texts(tGSsnap_2Dshot_2Dparameters, {"0123456789"}, 2)), "01234567   \n");
  QEL_DESC *status = own(userRows({"Success"}, tGSnone, 5));
  EXPECT_EQ(print(status), "Success: 1\n");
  status->printed = 0;
  QEL_SetColumnPrint(status, tGSname, 0, false);
  EXPECT_EQ(print(status), "1\n");
}

// Without a column plan nothing is written, the rest of the chain is
// skipped and the print says why.
TEST_F(Console, NullDescriptorAndPlanFailure) {
  LogCapture log;
  EXPECT_EQ(print(nullptr), "");
  QEL_DESC *a = own(userRows({"a", "b"}));
  QEL_link(a, userRows({}));
  framework::testing::setFailAfter(0);
  EXPECT_EQ(print(a), "");
  framework::testing::setFailAfter(-1);
  EXPECT_EQ(a->pNext->printed, 0);
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"pDesc is NULL", "Renderer: out of memory for a column plan; the print is incomplete"}));
}

} // namespace
