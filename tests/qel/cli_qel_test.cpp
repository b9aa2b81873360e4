// Descriptor life cycle, row sorting and column choice.
#include "support/fixture_tables.h"

#include <random>
#include <tuple>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

using Descriptor = qeltest::SessionTest;

std::vector<int> sorted(QEL_DESC *d) {
  std::vector<int> order(static_cast<std::size_t>(d->numRows), -1);
  SORTOutput(d, order.data());
  return order;
}

TEST_F(Descriptor, FailuresAndNullArguments) {
  ASSERT_NE(own(QEL_Create(&session_, tGSspares, tGSnone, 0, 0)), nullptr) << "no rows is fine";
  LogCapture log;
  for (bool debugOn : {true, false}) { // debug off: silent
    utility::Debug::setDebugOn(1192, debugOn);
    for (int rows : {1, -1, 0x7fffffff})
      EXPECT_EQ(QEL_Create(&session_, rows == 1 ? tGSserial_2Dnumber : tGSspares, tGSnone, rows, 0), nullptr);
    for (long k : {0, 1}) { // the block, then the column array
      framework::testing::setFailAfter(k);
      EXPECT_EQ(QEL_Create(&session_, tGSevents, tGSnone, 1, 0), nullptr);
    }
    framework::testing::setFailAfter(-1);
    QEL_link(nullptr, nullptr);
    QEL_Free(nullptr);
  }
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>(2, "QEL_Create: Could not find table serial-number"));
  std::vector<std::string> debug(4, "QEL_Create:: could not allocate the memory\n");
  debug.insert(debug.end(), {"QEL_link:: pDesc is NULL! DIE! \n", "QEL_Free:: NULL Pointer \n"});
  EXPECT_EQ(log.texts(Route::Debug), debug);
}

TEST_F(Descriptor, CompareRules) {
  auto cell = [](const char *t) { return reinterpret_cast<QEL_CELL>(t); };
  const std::tuple<SortType, ColumnDataType, QEL_CELL, QEL_CELL, int> cases[] = { // result: SORT_STRING's sign
      {SORT_STRING, COLTYPE_U32, 1, 2, 0},           {SORT_STRING, COLTYPE_STRING, cell("abc"), cell("abd"), -1},
      {SORT_STRING, COLTYPE_HEX_STRING, cell("abd"), cell("abc"), 1}, {SORT_STRING, COLTYPE_STRING, cell("abc"), 0, 0},
      {SORT_INTEGER, COLTYPE_U32, 0xffffffffu, 1, 1}, {SORT_INTEGER, COLTYPE_I32, 0xffffffffu, 5, 1}, // -1 sorts last
      {SORT_DATETIME, COLTYPE_STRING, 1, 2, -1},      {SORT_DISKSLOT, COLTYPE_STRING, cell("1.10"), cell("1.2"), 1},
      {SORT_DISKSLOT, COLTYPE_STRING, cell("x"), cell("0.0"), 0}, // unparsed: 0.0
      {SORT_DISKSLOT, COLTYPE_STRING, cell("0.1"), cell(""), 1}, {SORT_DISKSLOT, COLTYPE_STRING_N, cell("1.10"), cell("1.2"), 0},
      {SORT_SIZE, COLTYPE_U32, 1, 2, 0},              {static_cast<SortType>(77), COLTYPE_U32, 1, 2, 0}}; // no order
  for (const auto &[sort, type, a, b, result] : cases) {
    const int r = QEL_compare(sort, type, a, b);
    EXPECT_EQ(sort == SORT_STRING ? (r > 0) - (r < 0) : r, result)
        << "sort " << sort << ", type " << type << ", " << a << " vs " << b;
  }
}

// The reference: the stable insertion sort, comparison by comparison.
std::vector<int> insertionSort(QEL_DESC *d, int c, SortType sortType) {
  auto cell = [d, c](int row) { return d->cells[row * d->maxColumns + c]; };
  std::vector<int> order;
  for (int key = 0; key < d->numRows; ++key) {
    auto at = order.end();
    while (at != order.begin() &&
           QEL_compare(sortType, getColumnType(d->tableId, c), cell(at[-1]), cell(key)) > 0)
      --at;
    order.insert(at, key);
  }
  return order;
}

// Each table's sort column (the last one the catalogue marks) and type, with
// equal keys, unparsed texts, unfilled cells (which compare equal to
// everything) and no rows at all. Tables without a sort column, or whose
// last one is a nested table, and SORT_SIZE columns keep the filled order.
TEST_F(Descriptor, FastSortEqualsTheInsertionSort) {
  std::mt19937 rng(20261123);
  const std::tuple<GS_TokenValues, int, SortType> targets[] = {
      {tGSvolumes, 3, SORT_STRING},       {tGSdrives, 4, SORT_DISKSLOT},    {tGSenclosure_2Dlist, 1, SORT_INTEGER},
      {tGSvolume_2Dreservations, 3, SORT_STRING}, {tGSevents, 2, SORT_NONE}, {tGSstorage_2Dpool_2Dcomponents, 0, SORT_NONE},
      {tGSvolumes, 3, SORT_SIZE}};
  const char *pool[] = {"1.2", "1.10", "0.3", "2", "a", "A", "", "1.2x", "10.0", "b.1"};
  for (int round = 0; round < 350; ++round) {
    const auto [table, column, sortType] = targets[round % 7];
    gQdbShowVolumes[3].sortType = table == tGSvolumes ? sortType : SORT_STRING;
    const int rows = static_cast<int>(rng() % 40);
    QEL_DESC *d = QEL_Create(&session_, table, tGSnone, rows, 0);
    for (int r = 0; r < rows; ++r) {
      if (round % 2 == 0 && rng() % 4 == 0)
        continue; // an unfilled cell: null text, or 0
      if (sortType == SORT_INTEGER)
        QEL_FillColumnU32(&session_, d, column, r, rng() % 6 + (rng() % 2 ? 0x80000000u : 0));
      else
        QEL_FillColumnString(&session_, d, column, r, pool[rng() % 10]);
    }
    d->numRows = rows;
    ASSERT_EQ(sorted(d), insertionSort(d, column, sortType)) << "round " << round;
    QEL_Free(d);
  }
  gQdbShowVolumes[3].sortType = SORT_STRING;
}

// Choosing columns moves the cells with them and drops (and frees) the
// rest; rows sorted by a column keep that order in the print; descending
// keeps ties in their order. Renames, selection and sorting all go by the
// column's keyword.
TEST_F(Descriptor, SelectColumnsAndSortRows) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone, 4, 0));
  const std::pair<const char *, unsigned> rows[] = {{"delta", 2}, {"alpha", 9}, {"charlie", 2}, {"bravo", 5}};
  for (int r = 0; r < 4; ++r) {
    QEL_FillColumnString(&session_, d, 0, r, rows[r].first);
    QEL_FillColumnU32(&session_, d, 2, r, rows[r].second);
    QEL_FillColumnQEL(&session_, d, 1, r, QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0));
  }
  const GS_TokenValues chosen[] = {tGSslot, tGSname};
  QEL_SelectColumns(d, chosen, 2);
  // A rename looks for the column's keyword, not its display name.
  QEL_RenameColumnKeyword(d, &session_, tGSname, tGSvendor);
  QEL_RenameColumnKeyword(d, &session_, tGSvendor, tGSblocks);
  ASSERT_EQ(std::make_tuple(d->numColumns, d->pColumns[0].keywordId, d->pColumns[1].keywordId, d->pColumns[1].displayId),
            std::make_tuple(2, tGSslot, tGSname, tGSvendor));
  const std::tuple<GS_TokenValues, bool, std::string> cases[] = {
      {tGSname, false, "9 alpha,5 bravo,2 charlie,2 delta,"}, {tGSslot, false, "2 charlie,2 delta,5 bravo,9 alpha,"},
      {tGSname, true, "2 delta,2 charlie,5 bravo,9 alpha,"}, {tGSslot, true, "9 alpha,5 bravo,2 delta,2 charlie,"}};
  for (const auto &[column, descending, expected] : cases) {
    QEL_SortRows(d, column, descending);
    std::string rows;
    for (int r : sorted(d))
      rows += std::to_string(d->cells[r * 3]) + " " + reinterpret_cast<const char *>(d->cells[r * 3 + 1]) + ",";
    EXPECT_EQ(rows, expected) << strings::GS.toString(column) << (descending ? " down" : " up");
  }
  LogCapture log;
  const GS_TokenValues unknown[] = {tGSvendor};
  QEL_SelectColumns(d, unknown, 1);
  QEL_SortRows(d, tGSvendor, false);
  EXPECT_EQ(d->numColumns, 2);
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>{"QEL_SelectColumns: table managed-logs has no column vendor",
                                      "QEL_SortRows: table managed-logs has no column vendor"}));
}

} // namespace
