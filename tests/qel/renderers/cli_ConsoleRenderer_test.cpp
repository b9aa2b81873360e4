// Console tables, byte for byte: padding, wrapping, rules, titles, every
// layout, nested tables, chains and the printed flag.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Console : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  void TearDown() override {
    for (QEL_DESC *d : owned_)
      QEL_Free(d);
  }

  QEL_DESC *create(GS_TokenValues table, int rows, std::uint8_t format = 0,
                   GS_TokenValues name = tGSnone) {
    QEL_DESC *d = QEL_Create(&session_, table, name, rows, format);
    return d;
  }
  QEL_DESC *own(QEL_DESC *d) {
    owned_.push_back(d);
    return d;
  }
  // Two rows of the nesting fixture; row 0 holds a one-row nested table.
  QEL_DESC *nesting(std::uint8_t format, GS_TokenValues name = tGSnone) {
    QEL_DESC *d = own(create(tGSmanaged_2Dlogs, 2, format, name));
    QEL_FillColumnString(&session_, d, 0, 0, "alpha");
    QEL_FillColumnU32(&session_, d, 2, 0, 7);
    QEL_FillColumnString(&session_, d, 0, 1, "beta");
    QEL_FillColumnU32(&session_, d, 2, 1, 8);
    QEL_DESC *child = create(tGSsnmp_2Dusers, 1);
    QEL_FillColumnString(&session_, child, 0, 0, "n1");
    QEL_FillColumnU32(&session_, child, 1, 0, 5);
    QEL_FillColumnQEL(&session_, d, 1, 0, child);
    return d;
  }
  std::string print(QEL_DESC *d, int width = 80) {
    session_.getContext().setScreenWidth(width);
    out_.Rewind();
    ConsoleRenderer r(&session_);
    r.PrintTable(d, 0, 0);
    return out_.pTail();
  }

  utility::BufferStream out_{1 << 16};
  services::user::Session session_{out_};
  std::vector<QEL_DESC *> owned_;
};

// The nested table as the layouts print it, at indentation 2 or 3.
std::string nestedAt(const std::string &pad) {
  return pad + "Name       Slot   \n" + pad + "------------------\n" + pad + "n1         5\n";
}

TEST_F(Console, ColumnTableExample) {
  QEL_DESC *d = own(create(tGSsnmp_2Dusers, 2));
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnU32(&session_, d, 1, 0, 1);
  QEL_FillColumnString(&session_, d, 0, 1, "beta");
  QEL_FillColumnU32(&session_, d, 1, 1, 22);
  EXPECT_EQ(print(d), "Name       Slot   \n"
                      "------------------\n"
                      "alpha      1\n"
                      "beta       22\n"
                      "------------------");
  EXPECT_EQ(d->printed, 1);
  EXPECT_EQ(print(d), "") << "printed once only";
}

TEST_F(Console, WrapsBeforeAColumnThatReachesTheScreenWidth) {
  QEL_DESC *d = own(create(tGSsnap_2Dshot_2Dparameters, 1));
  QEL_FillColumnString(&session_, d, 0, 0, "a");
  QEL_FillColumnString(&session_, d, 1, 0, "b");
  QEL_FillColumnString(&session_, d, 2, 0, "c");
  EXPECT_EQ(print(d, 20), "Name     Vendor   \n"
                          "  Model    \n"
                          "------------------\n"
                          "a        b        \n"
                          "  c\n"
                          "------------------");
}

TEST_F(Console, RulesNeverExceedTheScreen) {
  QEL_DESC *d = own(create(tGSsnap_2Dshot_2Dparameters, 1));
  QEL_FillColumnString(&session_, d, 0, 0, "a");
  // Width 18: the header is 18 long, so rules shrink to width - 1.
  EXPECT_EQ(print(d, 18), "Name     Vendor   \n"
                          "  Model    \n"
                          "-----------------\n"
                          "a                 \n"
                          "  \n"
                          "-----------------");
}

TEST_F(Console, HeadersLongerThanTheColumnAndWidthTracking) {
  QEL_DESC *d = own(create(tGScopy_2Dvolume_2Dstatus, 2));
  QEL_FillColumnString(&session_, d, 0, 0, "abcd");
  QEL_FillColumnString(&session_, d, 1, 0, "xy");
  QEL_FillColumnU32(&session_, d, 2, 0, 1);
  QEL_FillColumnString(&session_, d, 0, 1, "ab");
  QEL_FillColumnString(&session_, d, 1, 1, "long text");
  QEL_FillColumnU32(&session_, d, 2, 1, 22);
  EXPECT_EQ(d->pColumns[0].width, 5);
  // "Timestamp" (9) widens the tracked column for the rows; "Description"
  // keeps its full text over a column of size 3, so the columns no longer
  // line up, and a value reaching width + 1 runs into the next one.
  EXPECT_EQ(print(d), "Timestamp Description Slot   \n"
                      "-----------------------------\n"
                      "abcd      xy  1\n"
                      "ab        long text22\n"
                      "-----------------------------");
  EXPECT_EQ(d->pColumns[0].width, 9);
}

TEST_F(Console, ChainsTitlesAndEmptyTables) {
  QEL_DESC *a = own(create(tGSsnmp_2Dusers, 1));
  QEL_FillColumnString(&session_, a, 0, 0, "x");
  QEL_FillColumnU32(&session_, a, 1, 0, 1);
  QEL_DESC *b = create(tGSsnmp_2Dusers, 0, 0, tGSvolumes);
  QEL_link(a, b);
  // The column table prints no title; an empty table still has its rules.
  EXPECT_EQ(print(a), "Name       Slot   \n"
                      "------------------\n"
                      "x          1\n"
                      "------------------\n"
                      "Name       Slot   \n"
                      "------------------\n"
                      "------------------");
}

TEST_F(Console, ChainSkipsPrintedDescriptorsWithoutANewline) {
  QEL_DESC *a = own(create(tGSsnmp_2Dusers, 0));
  QEL_DESC *b = create(tGSsnmp_2Dusers, 0);
  QEL_link(a, b);
  a->printed = 1;
  EXPECT_EQ(print(a), "Name       Slot   \n------------------\n------------------");
}

TEST_F(Console, ColumnTableWithNestedTable) {
  EXPECT_EQ(print(nesting(0)), "Name       Slot   \n"
                               "------------------\n"
                               "alpha      \n\n" +
                                   nestedAt("   ") +
                                   "7\n"
                                   "beta       8\n"
                                   "------------------");
  EXPECT_EQ(print(nesting(7)), print(nesting(0))) << "unknown formats print as rows";
}

TEST_F(Console, PairsLayout) {
  EXPECT_EQ(print(nesting(1, tGSvolumes)), "Volumes\n-------\n"
                                           "Name: alpha\n"
                                           "\n" +
                                               nestedAt("  ") +
                                               "\n"
                                               "Slot: 7\n"
                                               "\n"
                                               "Volumes\n-------\n"
                                               "Name: beta\n"
                                               "\n"
                                               "Slot: 8\n");
  EXPECT_EQ(print(nesting(1)), "Name: alpha\n\n" + nestedAt("  ") +
                                   "\nSlot: 7\n\nName: beta\n\nSlot: 8\n");
}

TEST_F(Console, PairsRowTrace) {
  QEL_DESC *d = own(create(tGSsnmp_2Dusers, 2, 1));
  d->numRows = 2;
  LogCapture log;
  utility::Debug::setDebugOn(3261, true);
  print(d);
  utility::Debug::setDebugOn(3261, false);
  ASSERT_EQ(log.records.size(), 3u);
  const char *fn = "virtual void ConsoleRenderer::PrintTable(QEL_DESC*, int, int)";
  EXPECT_EQ(log.records[0].text, "row[0]");
  EXPECT_EQ(log.records[0].line, 426);
  EXPECT_EQ(log.records[1].text, "row[1]");
  EXPECT_EQ(log.records[2].text, "NEW ENTRY");
  EXPECT_EQ(log.records[2].line, 429);
  for (const auto &r : log.records) {
    EXPECT_EQ(r.type, 3);
    EXPECT_STREQ(r.function, fn);
  }
}

TEST_F(Console, PackedLayout) {
  EXPECT_EQ(print(nesting(2)), "alpha \n" + nestedAt("   ") + "7 \n" + "beta 8 \n");
  // Values are cut to the column's size.
  QEL_DESC *d = own(create(tGSsnap_2Dshot_2Dparameters, 1, 2));
  QEL_FillColumnString(&session_, d, 0, 0, "0123456789");
  EXPECT_EQ(print(d), "01234567   \n");
}

TEST_F(Console, LabeledLayout) {
  EXPECT_EQ(print(nesting(3)),
            "Managed Logs [Name (alpha) ] Unhealthy Component:\n\n" + nestedAt("   ") +
                "Managed Logs [Slot (7) \n"
                "Managed Logs [Name (beta) ] Managed Logs [Slot (8) \n");
}

TEST_F(Console, RowsWithoutHeaderLayout) {
  EXPECT_EQ(print(nesting(4)), "alpha      " + nestedAt("   ") + "7\nbeta       8\n");
}

TEST_F(Console, StatusLayout) {
  EXPECT_EQ(print(nesting(5)), "alpha: \n" + nestedAt("   ") + "7\nbeta: 8\n");
  QEL_DESC *s = own(create(tGSsnmp_2Dusers, 1, 5));
  QEL_FillColumnString(&session_, s, 0, 0, "Success");
  QEL_FillColumnU32(&session_, s, 1, 0, 0);
  EXPECT_EQ(print(s), "Success: 0\n");
  // Without column 0 shown there is no separator.
  QEL_DESC *t = own(create(tGSsnmp_2Dusers, 1, 5));
  QEL_FillColumnString(&session_, t, 0, 0, "Success");
  QEL_FillColumnU32(&session_, t, 1, 0, 3);
  QEL_SetColumnPrint(t, tGSname, 0, false);
  EXPECT_EQ(print(t), "3\n");
}

TEST_F(Console, HiddenColumnsAndQualifiers) {
  QEL_DESC *d = own(create(tGSdrives, 1));
  for (int c = 0; c < d->numColumns; ++c)
    QEL_SetColumnPrint(d, d->pColumns[c].keywordId, 0, false);
  QEL_SetColumnPrint(d, tGSblocks, 1, false);
  QEL_SetColumnPrint(d, tGStransfer_2Drate, 1, false);
  QEL_FillColumnU64(&session_, d, 7, 0, "4096");
  // Headings show the qualifier's value in parentheses.
  std::string text = print(d);
  EXPECT_EQ(text.substr(0, text.find('\n')), "Blocks(512)          Transfer Rate(Gbps) ");
}

TEST_F(Console, NullDescriptorAndMissingRowOrder) {
  LogCapture log;
  print(nullptr);
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "pDesc is NULL");
  EXPECT_EQ(log.records[0].line, 375);
  EXPECT_STREQ(log.records[0].function,
               "virtual void ConsoleRenderer::PrintTable(QEL_DESC*, int, int)");
  log.clear();

  QEL_DESC *a = own(create(tGSsnmp_2Dusers, 2));
  a->numRows = 2;
  QEL_DESC *b = create(tGSsnmp_2Dusers, 0);
  QEL_link(a, b);
  ConsoleRenderer r(&session_);
  out_.Rewind();
  framework::Memory::setFailAfter(0);
  r.PrintTable(a, 0, 0);
  framework::Memory::setFailAfter(-1);
  EXPECT_STREQ(out_.pTail(), "Name       Slot   \n------------------\n");
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "malloc failed");
  EXPECT_EQ(log.records[0].line, 508);
  EXPECT_EQ(b->printed, 0) << "the rest of the chain is skipped";
}

TEST_F(Console, OverfullOutputIsCutNotThrown) {
  utility::BufferStream small(30);
  services::user::Session session(small);
  QEL_DESC *d = own(create(tGSsnmp_2Dusers, 1));
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  ConsoleRenderer r(&session);
  r.PrintTable(d, 0, 0);
  EXPECT_EQ(small.ReadAvailable(), 30);
}

TEST_F(Console, SortedRowOrder) {
  QEL_DESC *d = own(create(tGSdrives, 3));
  for (int c = 0; c < d->numColumns; ++c)
    QEL_SetColumnPrint(d, d->pColumns[c].keywordId, c == 4 ? 1 : 0, false);
  const char *locations[] = {"1.10", "0.3", "1.2"};
  for (int r = 0; r < 3; ++r)
    QEL_FillColumnString(&session_, d, 4, r, locations[r]);
  std::string text = print(d);
  EXPECT_NE(text.find("0.3"), std::string::npos);
  EXPECT_LT(text.find("0.3"), text.find("1.2"));
  EXPECT_LT(text.find("1.2 "), text.find("1.10"));
}

} // namespace
