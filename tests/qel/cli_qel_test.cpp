// Descriptor life cycle and row sorting.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Descriptor : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  void SetUp() override { baseline_ = framework::Memory::liveAllocations(); }
  void TearDown() override {
    EXPECT_EQ(framework::Memory::liveAllocations(), baseline_) << "leaked blocks";
  }

  utility::BufferStream out_{64};
  services::user::Session session_{out_};
  long baseline_ = 0;
};

std::vector<GS_TokenValues> chainOf(QEL_DESC *d) {
  std::vector<GS_TokenValues> tables;
  for (; d; d = d->pNext)
    tables.push_back(d->tableId);
  return tables;
}

TEST_F(Descriptor, CreateDescribesEveryColumn) {
  QEL_DESC *d = QEL_Create(&session_, tGSvolumes, tGSvolume_2Dname, 3, 1);
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->tableId, tGSvolumes);
  EXPECT_EQ(d->nameId, tGSvolume_2Dname);
  EXPECT_EQ(d->numRows, 0);
  EXPECT_EQ(d->numColumns, 42);
  EXPECT_EQ(d->maxColumns, 42);
  EXPECT_EQ(d->maxRows, 3);
  EXPECT_EQ(d->allocSize, (3 * 42 + 10) * 4);
  EXPECT_EQ(d->consoleFormat, 1);
  EXPECT_EQ(d->printed, 0);
  EXPECT_EQ(d->jsonSeparator, 0);
  EXPECT_EQ(d->pNext, nullptr);
  TableMetaData *t = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(tGSvolumes);
  for (int c = 0; c < 42; ++c) {
    const _QEL_COLUMN_DESC &col = d->pColumns[c];
    const PropertyMetaData *p = t->getPropertyDef(c);
    EXPECT_EQ(col.pProperty, p);
    EXPECT_EQ(col.keywordId, p->keywordId);
    EXPECT_EQ(col.displayId, p->keywordId);
    EXPECT_EQ(col.print, p->print);
    EXPECT_EQ(col.draw, p->draw);
    EXPECT_EQ(col.width, 0);
    EXPECT_EQ(col.qualifierNameId, p->qualifierNameId);
    EXPECT_EQ(col.qualifierValueId, p->qualifierValueId);
  }
  EXPECT_EQ(d->pColumns[18].qualifierNameId, tGSblocksize); // blocks
  for (int i = 0; i < 3 * 42; ++i)
    EXPECT_EQ(d->cells[i], 0u);
  QEL_Free(d);
}

TEST_F(Descriptor, Sizes) {
  struct Case {
    GS_TokenValues table;
    int maxRows;
    int size;
  } cases[] = {
      {tGScontroller_2Dstatistics, 10, 800}, // 19 columns
      {tGSvolumes, 0, 40},
      {tGSrefresh_5Fcounters, 5, 40}, // no columns at all
      {tGSevents, 1000, (1000 * 10 + 10) * 4},
  };
  for (const auto &c : cases) {
    QEL_DESC *d = QEL_Create(&session_, c.table, tGSnone, c.maxRows, 0);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(QEL_HowBig(d), c.size) << strings::GS.toString(c.table);
    QEL_Free(d);
  }
}

TEST_F(Descriptor, CreateFailures) {
  LogCapture log;
  utility::Debug::setDebugOn(1192, true);
  EXPECT_EQ(QEL_Create(&session_, tGSserial_2Dnumber, tGSnone, 1, 0), nullptr);
  EXPECT_EQ(QEL_Create(&session_, tGSspares, tGSnone, -1, 0), nullptr);
  EXPECT_EQ(QEL_Create(&session_, tGSspares, tGSnone, 0x7fffffff, 0), nullptr);
  framework::Memory::setFailAfter(0);
  EXPECT_EQ(QEL_Create(&session_, tGSevents, tGSnone, 1, 0), nullptr);
  framework::Memory::setFailAfter(1);
  EXPECT_EQ(QEL_Create(&session_, tGSevents, tGSnone, 1, 0), nullptr);
  framework::Memory::setFailAfter(-1);
  utility::Debug::setDebugOn(1192, false);
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"QEL_Create: Could not find table serial-number"}));
  EXPECT_EQ(log.texts(Route::Debug),
            (std::vector<std::string>(4, "QEL_Create:: could not allocate the memory\n")));
}

TEST_F(Descriptor, LinkAppendsWholeChains) {
  QEL_DESC *w = QEL_Create(&session_, tGSvolumes, tGSnone, 1, 0);
  QEL_DESC *x = QEL_Create(&session_, tGSdrives, tGSnone, 1, 0);
  QEL_DESC *y = QEL_Create(&session_, tGSevents, tGSnone, 1, 0);
  QEL_DESC *u = QEL_Create(&session_, tGShosts, tGSnone, 1, 0);
  QEL_DESC *v = QEL_Create(&session_, tGSfan, tGSnone, 1, 0);
  QEL_link(w, x);
  QEL_link(w, y);
  EXPECT_EQ(chainOf(w), (std::vector<GS_TokenValues>{tGSvolumes, tGSdrives, tGSevents}));
  QEL_link(u, v);
  QEL_link(w, u);
  EXPECT_EQ(chainOf(w), (std::vector<GS_TokenValues>{tGSvolumes, tGSdrives, tGSevents,
                                                      tGShosts, tGSfan}));
  LogCapture log;
  utility::Debug::setDebugOn(1192, true);
  QEL_link(nullptr, x);
  QEL_Free(nullptr);
  utility::Debug::setDebugOn(1192, false);
  QEL_link(nullptr, x); // debug off: silent
  EXPECT_EQ(log.texts(Route::Debug),
            (std::vector<std::string>{"QEL_link:: pDesc is NULL! DIE! \n",
                                      "QEL_Free:: NULL Pointer \n"}));
  QEL_Free(w);
}

TEST_F(Descriptor, ColumnPrintAndRename) {
  QEL_DESC *d = QEL_Create(&session_, tGSvolumes, tGSnone, 1, 0);
  _QEL_COLUMN_DESC &size = d->pColumns[4];
  ASSERT_EQ(size.keywordId, tGSsize);
  const std::uint8_t draw = size.draw;
  QEL_SetColumnPrint(d, tGSsize, 0, false);
  EXPECT_EQ(size.print, 0);
  EXPECT_EQ(size.draw, draw);
  QEL_SetColumnPrint(d, tGSsize, 1, true);
  EXPECT_EQ(size.print, 1);
  EXPECT_EQ(size.draw, 1);
  std::vector<std::uint8_t> before;
  for (int c = 0; c < d->numColumns; ++c)
    before.push_back(d->pColumns[c].print);
  QEL_SetColumnPrint(d, tGSrpm, 0, true); // not a column of volumes
  for (int c = 0; c < d->numColumns; ++c)
    EXPECT_EQ(d->pColumns[c].print, before[static_cast<std::size_t>(c)]);

  QEL_RenameColumnKeyword(d, &session_, tGSsize, tGStotal_2Dsize);
  EXPECT_EQ(size.displayId, tGStotal_2Dsize);
  EXPECT_EQ(size.keywordId, tGSsize);
  // The match stays on the original keyword: renaming the new name finds the
  // real total-size column (5), not column 4.
  QEL_RenameColumnKeyword(d, &session_, tGStotal_2Dsize, tGSblocks);
  EXPECT_EQ(size.displayId, tGStotal_2Dsize);
  EXPECT_EQ(d->pColumns[5].displayId, tGSblocks);
  QEL_RenameColumnKeyword(d, &session_, tGSrpm, tGSblocks); // no match
  QEL_Free(d);
}

TEST_F(Descriptor, FreeReleasesNestedChainsAndTexts) {
  // Chain: volumes -> controllers, whose QEL columns hold chains of nested
  // descriptors that hold texts and nested descriptors of their own.
  QEL_DESC *head = QEL_Create(&session_, tGSvolumes, tGSnone, 2, 0);
  QEL_FillColumnString(&session_, head, 0, 1, "V1");
  QEL_FillColumnBlocks(&session_, head, 4, 0, "2048");
  QEL_DESC *ctrl = QEL_Create(&session_, tGScontrollers, tGSnone, 2, 0);
  QEL_link(head, ctrl);
  for (int row = 0; row < 2; ++row) {
    QEL_DESC *health = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 2, 0);
    QEL_FillColumnString(&session_, health, 1, 0, "disk_01.05");
    QEL_DESC *more = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, more, 5, 0, "reason");
    QEL_link(health, more);
    QEL_FillColumnQEL(&session_, ctrl, 43, row, health);
    QEL_DESC *port = QEL_Create(&session_, tGSport, tGSnone, 1, 0);
    QEL_DESC *inner = QEL_Create(&session_, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, inner, 2, 0, "basetype");
    QEL_FillColumnQEL(&session_, port, 12, 0, inner);
    QEL_FillColumnQEL(&session_, ctrl, 45, row, port);
    QEL_FillColumnString(&session_, ctrl, 2, row, "SN");
  }
  EXPECT_GT(framework::Memory::liveAllocations(), baseline_ + 20);
  QEL_Free(head); // TearDown checks that every block came back
}

// A command handler's whole path, failing each allocation in turn (once, and
// from then on): nothing crashes and every block comes back.
void workflow(services::user::Session *s) {
  QEL_DESC *head = QEL_Create(s, tGSvolumes, tGSvolume_2Dname, 2, 0);
  QEL_FillColumnString(s, head, 3, 0, "vol-a");
  QEL_FillColumnString(s, head, 3, 1, "vol-b");
  QEL_FillColumnString(s, head, 3, 1, "vol-b2"); // refill releases the old copy
  QEL_FillColumnBlocks(s, head, 4, 0, "2048");
  QEL_FillColumnEnum(s, head, 37, 0, 1);
  QEL_DESC *ctrl = QEL_Create(s, tGScontrollers, tGSnone, 1, 0);
  QEL_DESC *health = QEL_Create(s, tGSunhealthy_2Dcomponent, tGSnone, 1, 0);
  QEL_FillColumnString(s, health, 5, 0, "degraded");
  if (ctrl)
    QEL_FillColumnQEL(s, ctrl, 43, 0, health); // ctrl now owns it
  else
    QEL_Free(health);
  if (head)
    QEL_link(head, ctrl);
  else
    QEL_Free(ctrl);
  QEL_DESC *fixture = QEL_Create(s, tGSspares, tGSnone, 2, 0);
  const std::uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  QEL_FillColumnHexString(s, fixture, 11, 0, bytes);
  QEL_FillColumnStringN(s, fixture, 13, 1, "VENDOR__extra");
  QEL_FillColumnU64(s, fixture, 9, 0, "123456789012");
  QEL_FillColumnBlocks2Bytes(s, fixture, 18, 1, "4096");
  if (head)
    QEL_link(head, fixture);
  else
    QEL_Free(fixture);
  QEL_Free(head);
}

TEST_F(Descriptor, AllocationFailuresNeverCrashOrLeak) {
  LogCapture log; // the failures are logged; keep them off stderr
  long calls = framework::Memory::totalAllocations();
  workflow(&session_);
  calls = framework::Memory::totalAllocations() - calls;
  ASSERT_GT(calls, 10);
  for (bool persistent : {false, true}) {
    for (long k = 0; k < calls; ++k) {
      SCOPED_TRACE("allocation " + std::to_string(k) + (persistent ? " on" : ""));
      framework::Memory::setFailAfter(k, persistent);
      workflow(&session_);
      framework::Memory::setFailAfter(-1);
      ASSERT_EQ(framework::Memory::liveAllocations(), baseline_);
    }
  }
}

// --- Sorting ----------------------------------------------------------------

class Sorting : public Descriptor {
protected:
  std::vector<int> sorted(QEL_DESC *d) {
    std::vector<int> order(static_cast<std::size_t>(d->numRows), -1);
    SORTOutput(d, order.data());
    return order;
  }
  // Fills column \p c of a new descriptor with \p texts (null: unfilled).
  QEL_DESC *withTexts(GS_TokenValues table, int c, std::vector<const char *> texts) {
    QEL_DESC *d = QEL_Create(&session_, table, tGSnone, static_cast<int>(texts.size()), 0);
    for (std::size_t r = 0; r < texts.size(); ++r)
      if (texts[r])
        QEL_FillColumnString(&session_, d, c, static_cast<int>(r), texts[r]);
    d->numRows = static_cast<int>(texts.size());
    return d;
  }
  std::vector<std::string> textsInOrder(QEL_DESC *d, int c) {
    std::vector<std::string> out;
    for (int r : sorted(d)) {
      auto *t = reinterpret_cast<const char *>(d->cells[r * d->maxColumns + c]);
      out.push_back(t ? t : "(null)");
    }
    return out;
  }
};

TEST_F(Sorting, DiskSlotAndStringOrders) {
  QEL_DESC *drives = withTexts(tGSdrives, 4, {"1.10", "0.3", "1.2"});
  EXPECT_EQ(textsInOrder(drives, 4), (std::vector<std::string>{"0.3", "1.2", "1.10"}));
  QEL_DESC *volumes = withTexts(tGSvolumes, 3, {"1.10", "0.3", "1.2"});
  EXPECT_EQ(textsInOrder(volumes, 3), (std::vector<std::string>{"0.3", "1.10", "1.2"}));
  // Texts that do not parse read as 0.0; equal keys keep their filled order.
  QEL_DESC *odd = withTexts(tGSdrives, 4, {"x", "0.1", "0.0", "", "0"});
  EXPECT_EQ(sorted(odd), (std::vector<int>{0, 2, 3, 4, 1}));
  QEL_Free(drives);
  QEL_Free(volumes);
  QEL_Free(odd);
}

TEST_F(Sorting, NumbersCompareUnsigned) {
  // enclosure-list sorts on its U32 enclosure-id.
  QEL_DESC *d = QEL_Create(&session_, tGSenclosure_2Dlist, tGSnone, 4, 0);
  const std::uint32_t ids[] = {3, 0xffffffffu, 1, 3};
  for (int r = 0; r < 4; ++r)
    QEL_FillColumnU32(&session_, d, 1, r, ids[r]);
  EXPECT_EQ(sorted(d), (std::vector<int>{2, 0, 3, 1}));
  QEL_Free(d);

  // An I32 column sorted as integers puts negative values last.
  PropertyMetaData &code = gQdbResponseMsg[2];
  ASSERT_EQ(code.type, COLTYPE_I32);
  const PropertyMetaData saved = code;
  code.sort = true;
  code.sortType = SORT_INTEGER;
  QEL_DESC *s = QEL_Create(&session_, tGSstatus, tGSnone, 3, 0);
  QEL_FillColumnI32(&session_, s, 2, 0, -1);
  QEL_FillColumnI32(&session_, s, 2, 1, 5);
  QEL_FillColumnI32(&session_, s, 2, 2, 0);
  EXPECT_EQ(sorted(s), (std::vector<int>{2, 1, 0}));
  code = saved;
  QEL_Free(s);
}

TEST_F(Sorting, WhichColumnAndWhenNot) {
  // volume-reservations has two sort columns: the later (host-id) wins.
  QEL_DESC *res = QEL_Create(&session_, tGSvolume_2Dreservations, tGSnone, 3, 0);
  const char *names[] = {"a", "b", "c"}, *hosts[] = {"h3", "h1", "h2"};
  for (int r = 0; r < 3; ++r) {
    QEL_FillColumnString(&session_, res, 0, r, names[r]);
    QEL_FillColumnString(&session_, res, 3, r, hosts[r]);
  }
  EXPECT_EQ(sorted(res), (std::vector<int>{1, 2, 0}));
  QEL_Free(res);

  // events has no sort column; a table whose last sort column is a nested
  // table (nosort) keeps its filled order too, as does a SORT_SIZE column.
  QEL_DESC *events = withTexts(tGSevents, 2, {"z", "a", "m"});
  EXPECT_EQ(sorted(events), (std::vector<int>{0, 1, 2}));
  QEL_DESC *comps = withTexts(tGSstorage_2Dpool_2Dcomponents, 0, {"z", "a", "m"});
  EXPECT_EQ(sorted(comps), (std::vector<int>{0, 1, 2}));
  PropertyMetaData &name = gQdbShowVolumes[3];
  name.sortType = SORT_SIZE;
  QEL_DESC *vols = withTexts(tGSvolumes, 3, {"z", "a", "m"});
  EXPECT_EQ(sorted(vols), (std::vector<int>{0, 1, 2}));
  name.sortType = SORT_STRING;
  EXPECT_EQ(sorted(vols), (std::vector<int>{1, 2, 0}));
  QEL_Free(events);
  QEL_Free(comps);
  QEL_Free(vols);

  for (int rows : {0, 1}) {
    QEL_DESC *small = QEL_Create(&session_, tGSvolumes, tGSnone, 1, 0);
    small->numRows = rows;
    int order[1] = {-7};
    SORTOutput(small, order);
    EXPECT_EQ(order[0], rows ? 0 : -7);
    QEL_Free(small);
  }
}

TEST_F(Sorting, CompareRules) {
  const char *a = "abc", *b = "abd";
  auto cell = [](const char *t) { return reinterpret_cast<QEL_CELL>(t); };
  EXPECT_EQ(QEL_compare(SORT_STRING, COLTYPE_U32, 1, 2), 0);
  EXPECT_LT(QEL_compare(SORT_STRING, COLTYPE_STRING, cell(a), cell(b)), 0);
  EXPECT_GT(QEL_compare(SORT_STRING, COLTYPE_HEX_STRING, cell(b), cell(a)), 0);
  EXPECT_EQ(QEL_compare(SORT_STRING, COLTYPE_STRING, cell(a), 0), 0);
  EXPECT_EQ(QEL_compare(SORT_INTEGER, COLTYPE_U32, 0xffffffffu, 1), 1);
  EXPECT_EQ(QEL_compare(SORT_DATETIME, COLTYPE_STRING, 1, 2), -1);
  EXPECT_EQ(QEL_compare(SORT_DISKSLOT, COLTYPE_STRING, cell("1.10"), cell("1.2")), 1);
  EXPECT_EQ(QEL_compare(SORT_DISKSLOT, COLTYPE_STRING_N, cell("1.10"), cell("1.2")), 0);
  EXPECT_EQ(QEL_compare(SORT_SIZE, COLTYPE_U32, 1, 2), 0);
  EXPECT_EQ(QEL_compare(SORT_NONE, COLTYPE_U32, 1, 2), 0);
  EXPECT_EQ(QEL_compare(static_cast<SortType>(77), COLTYPE_U32, 1, 2), 0);
}

TEST_F(Sorting, DebugLines) {
  QEL_DESC *d = withTexts(tGSvolumes, 3, {"b", "a", "c"});
  LogCapture log;
  utility::Debug::setDebugOn(1192, true);
  sorted(d);
  SORTOutput(nullptr, nullptr);
  utility::Debug::setDebugOn(1192, false);
  auto lines = log.texts(Route::Debug);
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0].rfind("SORTOutput:indeces = ", 0), 0u);
  EXPECT_NE(lines[0].find(" [volumes] (3)\n"), std::string::npos);
  EXPECT_EQ(lines[1], "SORTOutput:finding sort Column (42)\n");
  EXPECT_EQ(lines[2], "SORTOutput:sort column = 3 [volume-name]\n");
  EXPECT_EQ(lines[3], "SORTOutput:Begin sort\n");
  EXPECT_EQ(lines[4], "SORTOutput:row = 1\n");
  EXPECT_EQ(lines[5], "SORTOutput:row = 2\n");
  EXPECT_EQ(lines[6], "SORTOutput:indeces or pDesc == NULL... returning\n");
  QEL_Free(d);
}

// The reference: the stable insertion sort, comparison by comparison.
std::vector<int> insertionSort(QEL_DESC *d, int c, SortType sortType) {
  std::vector<int> order(static_cast<std::size_t>(d->numRows));
  for (int k = 0; k < d->numRows; ++k)
    order[static_cast<std::size_t>(k)] = k;
  ColumnDataType type = getColumnType(d->tableId, c);
  for (std::size_t i = 1; i < order.size(); ++i) {
    int key = order[i];
    std::size_t j = i;
    for (; j > 0 && QEL_compare(sortType, type, d->cells[order[j - 1] * d->maxColumns + c],
                                d->cells[key * d->maxColumns + c]) > 0;
         --j)
      order[j] = order[j - 1];
    order[j] = key;
  }
  return order;
}

TEST_F(Sorting, FastSortEqualsTheInsertionSort) {
  std::mt19937 rng(20261123);
  struct Target {
    GS_TokenValues table;
    int column;
    SortType sortType;
  } targets[] = {{tGSvolumes, 3, SORT_STRING},
                 {tGSdrives, 4, SORT_DISKSLOT},
                 {tGSenclosure_2Dlist, 1, SORT_INTEGER}};
  const char *pool[] = {"1.2", "1.10", "0.3", "2", "a", "A", "", "1.2x", "10.0", "b.1"};
  for (int round = 0; round < 300; ++round) {
    const Target &t = targets[round % 3];
    const int rows = 1 + static_cast<int>(rng() % 40);
    const bool gaps = round % 2 == 0;
    QEL_DESC *d = QEL_Create(&session_, t.table, tGSnone, rows, 0);
    for (int r = 0; r < rows; ++r) {
      if (gaps && rng() % 4 == 0)
        continue; // an unfilled cell: null text, or 0
      if (t.sortType == SORT_INTEGER)
        QEL_FillColumnU32(&session_, d, t.column, r, rng() % 6 + (rng() % 2 ? 0x80000000u : 0));
      else
        QEL_FillColumnString(&session_, d, t.column, r, pool[rng() % 10]);
    }
    d->numRows = rows;
    ASSERT_EQ(sorted(d), insertionSort(d, t.column, t.sortType)) << "round " << round;
    QEL_Free(d);
  }
}

} // namespace
