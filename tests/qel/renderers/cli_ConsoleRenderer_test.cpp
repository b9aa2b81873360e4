// Console tables, byte for byte: padding, wrapping, rules, every layout,
// nested tables, chains and the printed flag.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using qeltest::LogCapture;

class Console : public qeltest::SessionTest {
protected:
  // A descriptor freed at the end of the test, with (text, number) rows in
  // columns 0 and \p numberColumn (-1: texts only).
  QEL_DESC *table(GS_TokenValues basetype, std::vector<std::pair<const char *, int>> rows,
                  std::uint8_t format = 0, GS_TokenValues name = tGSnone, int numberColumn = 1) {
    QEL_DESC *d = QEL_Create(&session_, basetype, name, static_cast<int>(rows.size()), format);
    for (std::size_t r = 0; r < rows.size(); ++r) {
      QEL_FillColumnString(&session_, d, 0, static_cast<int>(r), rows[r].first);
      if (numberColumn >= 0)
        QEL_FillColumnU32(&session_, d, numberColumn, static_cast<int>(r),
                          static_cast<unsigned>(rows[r].second));
    }
    return own(d);
  }
  // Two rows of the nesting fixture; row 0 holds a one-row nested table.
  QEL_DESC *nesting(std::uint8_t format, GS_TokenValues name = tGSnone) {
    QEL_DESC *d = table(tGSmanaged_2Dlogs, {{"alpha", 7}, {"beta", 8}}, format, name, 2);
    QEL_FillColumnQEL(&session_, d, 1, 0, userRows({"n1"}));
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
  QEL_DESC *a = table(tGSsnmp_2Dusers, {{"alpha", 1}, {"beta", 22}});
  EXPECT_EQ(print(a), kHeader + "alpha      1\nbeta       22\n" + kRule);
  EXPECT_EQ(a->printed, 1);
  EXPECT_EQ(print(a), "") << "printed once only";
  // A chain: no titles; an empty table still has its rules; a printed
  // descriptor is skipped without a newline.
  QEL_DESC *b = table(tGSsnmp_2Dusers, {{"x", 1}});
  QEL_link(b, QEL_Create(&session_, tGSsnmp_2Dusers, tGSvolumes, 0, 0));
  EXPECT_EQ(print(b), kHeader + "x          1\n" + kRule + "\n" + kHeader + kRule);
  QEL_DESC *c = table(tGSsnmp_2Dusers, {});
  QEL_link(c, QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 0, 0));
  c->printed = 1;
  EXPECT_EQ(print(c), kHeader + kRule);
}

TEST_F(Console, WrapsBeforeAColumnThatReachesTheScreenWidth) {
  QEL_DESC *d = table(tGSsnap_2Dshot_2Dparameters, {{"a", 0}}, 0, tGSnone, -1);
  QEL_FillColumnString(&session_, d, 1, 0, "b");
  const std::string head = "Name     Vendor   \n  Model    \n";
  // Width 18: the header is 18 long, so rules shrink to width - 1.
  EXPECT_EQ(print(d, 18), head + "-----------------\na        b        \n  \n-----------------");
  d->printed = 0;
  QEL_FillColumnString(&session_, d, 2, 0, "c");
  EXPECT_EQ(print(d, 20), head + kRule + "\na        b        \n  c\n" + kRule);
}

TEST_F(Console, HeadersLongerThanTheColumnAndWidthTracking) {
  QEL_DESC *d = table(tGScopy_2Dvolume_2Dstatus, {{"abcd", 1}, {"ab", 22}}, 0, tGSnone, 2);
  QEL_FillColumnString(&session_, d, 1, 0, "xy");
  QEL_FillColumnString(&session_, d, 1, 1, "long text");
  EXPECT_EQ(d->pColumns[0].width, 5);
  // "Timestamp" (9) widens the tracked column for the rows; "Description"
  // keeps its full text over a column of size 3, so the columns no longer
  // line up, and a value reaching width + 1 runs into the next one.
  const std::string rule(29, '-');
  EXPECT_EQ(print(d), "Timestamp Description Slot   \n" + rule +
                          "\nabcd      xy  1\nab        long text22\n" + rule);
  EXPECT_EQ(d->pColumns[0].width, 9);
}

TEST_F(Console, EveryLayoutWithANestedTable) {
  const std::string pairsRow2 = "\nName: beta\n\nSlot: 8\n";
  struct Case {
    std::uint8_t format;
    GS_TokenValues name;
    std::string expected;
  } cases[] = {
      {0, tGSnone, kHeader + "alpha      \n\n" + nestedAt("   ") + "7\nbeta       8\n" + kRule},
      {7, tGSnone, kHeader + "alpha      \n\n" + nestedAt("   ") + "7\nbeta       8\n" + kRule},
      {1, tGSnone, "Name: alpha\n\n" + nestedAt("  ") + "\nSlot: 7\n" + pairsRow2},
      {1, tGSvolumes, "Volumes\n-------\nName: alpha\n\n" + nestedAt("  ") +
                          "\nSlot: 7\n\nVolumes\n-------" + pairsRow2},
      {2, tGSnone, "alpha \n" + nestedAt("   ") + "7 \nbeta 8 \n"},
      {3, tGSnone, "Managed Logs [Name (alpha) ] Unhealthy Component:\n\n" + nestedAt("   ") +
                       "Managed Logs [Slot (7) \nManaged Logs [Name (beta) ] Managed Logs [Slot (8) \n"},
      {4, tGSnone, "alpha      " + nestedAt("   ") + "7\nbeta       8\n"},
      {5, tGSnone, "alpha: \n" + nestedAt("   ") + "7\nbeta: 8\n"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(static_cast<int>(c.format));
    EXPECT_EQ(print(nesting(c.format, c.name)), c.expected);
  }
}

TEST_F(Console, PackedCutsValuesAndStatusSeparatesTheFirst) {
  EXPECT_EQ(print(table(tGSsnap_2Dshot_2Dparameters, {{"0123456789", 0}}, 2, tGSnone, -1)),
            "01234567   \n");
  EXPECT_EQ(print(table(tGSsnmp_2Dusers, {{"Success", 0}}, 5)), "Success: 0\n");
  QEL_DESC *t = table(tGSsnmp_2Dusers, {{"Success", 3}}, 5);
  QEL_SetColumnPrint(t, tGSname, 0, false); // without column 0: no separator
  EXPECT_EQ(print(t), "3\n");
}

TEST_F(Console, PairsRowTrace) {
  QEL_DESC *d = table(tGSsnmp_2Dusers, {{"a", 1}, {"b", 2}}, 1);
  LogCapture log;
  utility::Debug::setDebugOn(3261, true);
  print(d);
  utility::Debug::setDebugOn(3261, false);
  EXPECT_EQ(records(log), (std::vector<Record>{{"row[0]", 426, 3, kPrintTable},
                                               {"row[1]", 426, 3, kPrintTable},
                                               {"NEW ENTRY", 429, 3, kPrintTable}}));
}

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
  // Headings show the qualifier's value in parentheses; rows follow the
  // disk-slot order of the location column.
  const std::string rule(50, '-');
  EXPECT_EQ(print(d), "Location Blocks(512)          Transfer Rate(Gbps) \n" + rule +
                          "\n0.3      4097                 1.5Gb    \n"
                          "1.2      4098                 1.5Gb    \n"
                          "1.10     4096                 1.5Gb    \n" + rule);
}

TEST_F(Console, NullDescriptorAndMissingRowOrder) {
  LogCapture log;
  print(nullptr);
  QEL_DESC *a = table(tGSsnmp_2Dusers, {{"a", 1}, {"b", 2}});
  QEL_DESC *b = QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 0, 0);
  QEL_link(a, b);
  ConsoleRenderer r(&session_);
  out_.Rewind();
  framework::Memory::setFailAfter(0);
  r.PrintTable(a, 0, 0);
  framework::Memory::setFailAfter(-1);
  EXPECT_EQ(out_.pTail(), kHeader);
  EXPECT_EQ(b->printed, 0) << "the rest of the chain is skipped";
  EXPECT_EQ(records(log), (std::vector<Record>{{"pDesc is NULL", 375, 0, kPrintTable},
                                               {"malloc failed", 508, 0, kPrintTable}}));
}

TEST_F(Console, OverfullOutputIsCutNotThrown) {
  utility::BufferStream small(30);
  services::user::Session session(small);
  ConsoleRenderer(&session).PrintTable(table(tGSsnmp_2Dusers, {{"alpha", 1}}), 0, 0);
  EXPECT_EQ(small.ReadAvailable(), 30);
}

} // namespace
