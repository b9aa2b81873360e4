// Console tables, byte for byte: padding, wrapping, rules, every layout,
// nested tables, chains and the printed flag.
#include "support/fixture_tables.h"

#include <tuple>

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

const char kPrintTable[] = "virtual void ConsoleRenderer::PrintTable(QEL_DESC*, int, int)";
using Record = std::tuple<std::string, int, int, std::string>; // text, line, type, function
std::vector<Record> records(const LogCapture &log) {
  std::vector<Record> out;
  for (const auto &r : log.records)
    out.emplace_back(r.text, r.line, r.type, r.function);
  return out;
}

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
  EXPECT_EQ(d->pColumns[0].width, 5);
  const std::string rule(29, '-');
  EXPECT_EQ(print(d), "Timestamp Description Slot   \n" + rule +
                          "\nabcd      xy  1\nab        long text22\n" + rule);
  EXPECT_EQ(d->pColumns[0].width, 9);
}

// The column and pairs layouts are pinned by the front end's golden files.
TEST_F(Console, OtherLayoutsWithANestedTable) {
  struct Case {
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
  for (const auto &c : cases) {
    SCOPED_TRACE(static_cast<int>(c.format));
    EXPECT_EQ(print(logRows(userRows({"n1"}), c.name, c.format)), c.expected);
  }
}

TEST_F(Console, PackedCutsValuesAndStatusSeparatesTheFirst) {
  EXPECT_EQ(print(texts(tGSsnap_2Dshot_2Dparameters, {"0123456789"}, 2)), "01234567   \n");
  EXPECT_EQ(print(own(userRows({"Success"}, tGSnone, 5))), "Success: 1\n");
  QEL_DESC *t = own(userRows({"Success"}, tGSnone, 5));
  QEL_SetColumnPrint(t, tGSname, 0, false); // without column 0: no separator
  EXPECT_EQ(print(t), "1\n");
}

// Headings show the qualifier's value in parentheses; rows follow the
// disk-slot order of the location column.
TEST_F(Console, QualifiersInHeadingsAndSortedRows) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSdrives, tGSnone, 3, 0));
  for (int c = 0; c < d->numColumns; ++c)
    QEL_SetColumnPrint(d, d->pColumns[c].keywordId, c == 4 || c == 7, false);
  QEL_SetColumnPrint(d, tGStransfer_2Drate, 1, false);
  const char *locations[] = {"1.10", "0.3", "1.2"};
  for (int r = 0; r < 3; ++r) {
    QEL_FillColumnString(&session_, d, 4, r, locations[r]);
    QEL_FillColumnU64(&session_, d, 7, r, std::to_string(4096 + r).c_str());
  }
  const std::string rule(50, '-');
  EXPECT_EQ(print(d), "Location Blocks(512)          Transfer Rate(Gbps) \n" + rule +
                          "\n0.3      4097                 1.5Gb    \n"
                          "1.2      4098                 1.5Gb    \n"
                          "1.10     4096                 1.5Gb    \n" + rule);
}

TEST_F(Console, NullDescriptorAndAllocationFailures) {
  LogCapture log;
  print(nullptr);
  EXPECT_EQ(records(log), (std::vector<Record>{{"pDesc is NULL", 375, 0, kPrintTable}}));
  // The last allocation of a print is the row order; the ones before it the
  // column plan. Without the order the header stands and the rest of the
  // chain is skipped; without the plan nothing is written and the print
  // says why.
  QEL_DESC *a = own(userRows({"a", "b"}));
  QEL_DESC *b = userRows({});
  QEL_link(a, b);
  const long allocations = [&] {
    ConsoleRenderer r(&session_);
    const long before = framework::Memory::totalAllocations();
    r.PrintTable(a, 0, 0);
    a->printed = b->printed = 0;
    return framework::Memory::totalAllocations() - before;
  }();
  struct {
    long failAt;
    std::string output, message;
  } cases[] = {{allocations - 1, kHeader, "malloc failed"},
               {0, "", "Renderer: out of memory for a column plan; the print is incomplete"}};
  for (const auto &c : cases) {
    LogCapture failures;
    ConsoleRenderer r(&session_);
    out_.Rewind();
    framework::testing::setFailAfter(c.failAt);
    r.PrintTable(a, 0, 0);
    framework::testing::setFailAfter(-1);
    EXPECT_EQ(out_.pTail(), c.output) << c.failAt;
    EXPECT_EQ(b->printed, 0) << "the rest of the chain is skipped";
    ASSERT_EQ(failures.records.size(), 1u) << c.failAt;
    EXPECT_EQ(failures.records[0].text, c.message);
  }
}

} // namespace
