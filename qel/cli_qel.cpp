// Descriptor life cycle (create, link, size, adjust, free) and row sorting.
#include <qel/cli_qel.h>
#include <qel/internal.h>
#include <qel/renderers/cli_CSVRenderer.h>
#include <qel/renderers/cli_ConsoleRenderer.h>
#include <qel/renderers/cli_HTMLRenderer.h>
#include <qel/renderers/cli_JSONRenderer.h>
#include <qel/renderers/cli_StdJSONRenderer.h>
#include <qel/renderers/cli_TagRenderer.h>
#include <qel/renderers/cli_XMLRenderer.h>

#include <qel/platform/debug.h>
#include <qel/platform/framework.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

using qel_detail::cellAt;
using qel_detail::keywordText;

namespace {

constexpr unsigned kDebugDescriptor = 1192;

void QELDB_DescribeColumn(QEL_DESC *desc, services::user::Session *session,
                          GS_TokenValues table) {
  LocaleCode locale = session ? session->getPreferences().getLocale() : LOCALE_EN;
  TableMetaDataManager *registry =
      TableMetaDataManager::getTableMetaDataManager(locale);
  if (!registry) {
    framework::Logger::StaticLog(0, "QELDB_DescribeColumn: TableMetaDataManager "
                                    "cannot be found. Not recoverable.\n");
    return;
  }
  TableMetaData *t = registry->getTable(table);
  if (!t) {
    framework::Logger::StaticLog(
        0,
        "QELDB_DescribeColumn: No such table %s. Did you register this table "
        "in with the TableMetaDataManager?\n",
        keywordText(table));
    return;
  }
  for (int i = 0; i < t->getNumColumns(); ++i) {
    const PropertyMetaData *p = t->getPropertyDef(i);
    _QEL_COLUMN_DESC &col = desc->pColumns[desc->numColumns];
    col.pProperty = p;
    col.keywordId = p->keywordId;
    col.displayId = p->keywordId;
    col.width = 0;
    col.draw = p->draw;
    col.print = p->print;
    col.qualifierNameId = p->qualifierNameId;
    col.qualifierValueId = p->qualifierValueId;
    ++desc->numColumns;
  }
}

void allocationFailed() {
  if (IsDebugOn(kDebugDescriptor))
    logDebugPrint("QEL_Create:: could not allocate the memory\n");
}

} // namespace

const char *getConsoleFormat(QEL_DESC *desc) {
  if (!desc)
    return "none";
  switch (desc->consoleFormat) {
  case QEL_FORMAT_ROWS:
  case QEL_FORMAT_EMBEDDED_ROWS:
    return "rows";
  case QEL_FORMAT_PAIRS:
    return "pairs";
  case QEL_FORMAT_PACKED:
    return "packed";
  case QEL_FORMAT_LABELED:
    return "labeled";
  case QEL_FORMAT_STATUS:
    return "status";
  default:
    return "none";
  }
}

QEL_DESC *QEL_Create(services::user::Session *session, GS_TokenValues table,
                     GS_TokenValues name, int maxRows,
                     std::uint8_t consoleFormat) {
  LocaleCode locale = session ? session->getPreferences().getLocale() : LOCALE_EN;
  TableMetaData *t =
      TableMetaDataManager::getTableMetaDataManager(locale)->getTable(table);
  if (!t) {
    // Before start-up every table is unknown; say what is missing instead.
    if (!qel_detail::libraryStarted())
      framework::Logger::StaticLog(
          0, "QEL_Create: Could not find table %s: the output service is not built "
             "(call framework::Container::getContainer()->buildService(pGSQel)->Startup() first)",
          keywordText(table));
    else
      framework::Logger::StaticLog(0, "QEL_Create: Could not find table %s", keywordText(table));
    return nullptr;
  }
  const int n = static_cast<std::uint16_t>(t->getNumColumns());

  // The reported size follows (maxRows * n + 10) * 4 and must fit its field;
  // the block itself holds the header and one word per cell.
  const long long cellCount = static_cast<long long>(maxRows) * n;
  if (maxRows < 0 || (cellCount + 10) * 4 > INT_MAX) {
    allocationFailed();
    return nullptr;
  }
  const std::size_t blockSize = offsetof(QEL_DESC, cells) +
                                static_cast<std::size_t>(cellCount) * sizeof(QEL_CELL) +
                                qel_detail::kTailWords * sizeof(QEL_CELL);
  auto *desc = static_cast<QEL_DESC *>(framework::Memory::StaticAlloc(blockSize));
  if (!desc) {
    allocationFailed();
    return nullptr;
  }
  std::memset(static_cast<void *>(desc), 0, blockSize);
  desc->tableId = table;
  desc->nameId = name;
  desc->numRows = 0;
  desc->numColumns = 0;
  desc->maxRows = maxRows;
  desc->maxColumns = n;
  desc->allocSize = static_cast<std::int32_t>((cellCount + 10) * 4);
  desc->printed = 0;
  desc->consoleFormat = consoleFormat;
  desc->pNext = nullptr;
  desc->jsonSeparator = 0;

  const std::size_t columnsSize = static_cast<std::size_t>(n) * sizeof(_QEL_COLUMN_DESC);
  desc->pColumns =
      static_cast<_QEL_COLUMN_DESC *>(framework::Memory::StaticAlloc(columnsSize));
  if (!desc->pColumns) {
    allocationFailed();
    framework::Memory::StaticFree(desc);
    return nullptr;
  }
  std::memset(static_cast<void *>(desc->pColumns), 0, columnsSize);
  QELDB_DescribeColumn(desc, session, table);
  return desc;
}

void QEL_link(QEL_DESC *head, QEL_DESC *child) {
  if (!head) {
    if (IsDebugOn(kDebugDescriptor))
      logDebugPrint("QEL_link:: pDesc is NULL! DIE! \n");
    return;
  }
  while (head->pNext)
    head = head->pNext;
  head->pNext = child;
}

int QEL_HowBig(QEL_DESC *desc) { return desc ? desc->allocSize : 0; }

void QEL_Free(QEL_DESC *head) {
  if (!head) {
    if (IsDebugOn(kDebugDescriptor))
      logDebugPrint("QEL_Free:: NULL Pointer \n");
    return;
  }
  for (QEL_DESC *d = head; d;) {
    QEL_DESC *next = d->pNext;
    // Text copies go with their chunks; nested descriptors one by one.
    for (int c = 0; c < d->numColumns; ++c) {
      if (qel_detail::columnType(d, c) != COLTYPE_QEL)
        continue;
      for (int r = 0; r < d->numRows; ++r) {
        QEL_CELL &cell = cellAt(d, r, c);
        if (cell)
          QEL_Free(reinterpret_cast<QEL_DESC *>(cell));
        cell = 0;
      }
    }
    qel_detail::freeTextStorage(d);
    d->pNext = nullptr;
    framework::Memory::StaticFree(d->pColumns);
    framework::Memory::StaticFree(d);
    d = next;
  }
}

void QEL_SetColumnPrint(QEL_DESC *desc, GS_TokenValues column,
                        std::uint8_t value, bool alsoDraw) {
  if (!desc)
    return;
  for (int c = 0; c < desc->numColumns; ++c) {
    _QEL_COLUMN_DESC &col = desc->pColumns[c];
    if (col.keywordId == column) {
      col.print = value;
      if (alsoDraw)
        col.draw = value;
      return;
    }
  }
}

void QEL_RenameColumnKeyword(QEL_DESC *desc, services::user::Session *,
                             GS_TokenValues oldKeyword,
                             GS_TokenValues newKeyword) {
  if (!desc)
    return;
  for (int c = 0; c < desc->numColumns; ++c) {
    if (desc->pColumns[c].keywordId == oldKeyword) {
      desc->pColumns[c].displayId = newKeyword;
      return;
    }
  }
}

// --- Sorting ----------------------------------------------------------------

namespace {

// "%d.%d": enclosure, then slot; numbers that do not parse read as 0.
std::pair<int, int> diskSlot(const char *text) {
  int enclosure = 0, slot = 0;
  std::sscanf(text, "%d.%d", &enclosure, &slot);
  return {enclosure, slot};
}

template <typename T> int threeWay(T a, T b) { return a < b ? -1 : (a > b ? 1 : 0); }

} // namespace

int QEL_compare(SortType sortType, ColumnDataType type, QEL_CELL a, QEL_CELL b) {
  switch (sortType) {
  case SORT_DISKSLOT:
    if (type != COLTYPE_STRING || !a || !b)
      return 0;
    return threeWay(diskSlot(reinterpret_cast<const char *>(a)),
                    diskSlot(reinterpret_cast<const char *>(b)));
  case SORT_DATETIME:
  case SORT_INTEGER:
    return threeWay(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b));
  case SORT_STRING:
    if (type != COLTYPE_STRING && type != COLTYPE_STRING_N &&
        type != COLTYPE_HEX_STRING)
      return 0;
    if (!a || !b)
      return 0;
    return std::strcmp(reinterpret_cast<const char *>(a),
                       reinterpret_cast<const char *>(b));
  default:
    return 0;
  }
}

// The order is the permutation that a stable insertion sort with
// QEL_compare produces. Where QEL_compare is a consistent order over the
// column (numbers; texts that are all present), that permutation is the
// unique stable sorted order, so a stable O(n log n) sort gives it. Where
// some cells cannot be compared (a null text compares equal to everything,
// which is not transitive), only the insertion sort itself gives it.
void SORTOutput(QEL_DESC *desc, int *order) {
  const bool debug = IsDebugOn(kDebugDescriptor);
  if (!order || !desc) {
    if (debug)
      logDebugPrint("SORTOutput:indeces or pDesc == NULL... returning\n");
    return;
  }
  const int n = desc->numRows;
  if (debug) {
    logDebugPrint("SORTOutput:indeces = %d, pDesc = %lx [%s] (%d)\n",
                  static_cast<int>(reinterpret_cast<std::intptr_t>(order)),
                  static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(desc)),
                  keywordText(desc->tableId), n);
    logDebugPrint("SORTOutput:finding sort Column (%d)\n", desc->numColumns);
  }
  int column = -1;
  SortType sortType = SORT_NONE;
  for (int c = 0; c < desc->numColumns; ++c) {
    const PropertyMetaData *p = desc->pColumns[c].pProperty;
    if (p && p->sort) {
      column = c;
      sortType = p->sortType;
    }
  }
  if (debug)
    logDebugPrint("SORTOutput:sort column = %d [%s]\n", column,
                  column < 0 ? "" : keywordText(desc->pColumns[column].pProperty->keywordId));
  for (int k = 0; k < n; ++k)
    order[k] = k;
  if (qel_detail::flagsOf(desc) & qel_detail::kRowsInCallerOrder)
    return; // QEL_SortRows ordered the rows
  if (column < 0) {
    if (debug)
      logDebugPrint("SORTOutput:finding sort Column (%d)\n", desc->numColumns);
    return;
  }
  const ColumnDataType type = qel_detail::columnType(desc, column);
  if (sortType == SORT_NONE)
    return;
  if (debug) {
    logDebugPrint("SORTOutput:Begin sort\n");
    for (int i = 1; i < n; ++i)
      logDebugPrint("SORTOutput:row = %d\n", i);
  }
  if (n < 2)
    return;

  auto cell = [desc, column](int row) { return cellAt(desc, row, column); };
  bool allPresent = true;
  for (int r = 0; r < n && allPresent; ++r)
    allPresent = cell(r) != 0;

  // The fast paths sort (key, row) pairs: the keys sit next to each other
  // instead of one table row apart, and equal keys keep their row order.
  switch (sortType) {
  case SORT_DATETIME:
  case SORT_INTEGER: {
    std::vector<std::pair<std::uint32_t, int>> keyed(static_cast<std::size_t>(n));
    for (int r = 0; r < n; ++r)
      keyed[static_cast<std::size_t>(r)] = {static_cast<std::uint32_t>(cell(r)), r};
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto &x, const auto &y) { return x.first < y.first; });
    for (int k = 0; k < n; ++k)
      order[k] = keyed[static_cast<std::size_t>(k)].second;
    return;
  }
  case SORT_STRING:
    if (type != COLTYPE_STRING && type != COLTYPE_STRING_N &&
        type != COLTYPE_HEX_STRING)
      return; // every pair compares equal: the filled order stands
    if (allPresent) {
      std::vector<std::pair<const char *, int>> keyed(static_cast<std::size_t>(n));
      for (int r = 0; r < n; ++r)
        keyed[static_cast<std::size_t>(r)] = {reinterpret_cast<const char *>(cell(r)), r};
      std::stable_sort(keyed.begin(), keyed.end(), [](const auto &x, const auto &y) {
        return std::strcmp(x.first, y.first) < 0;
      });
      for (int k = 0; k < n; ++k)
        order[k] = keyed[static_cast<std::size_t>(k)].second;
      return;
    }
    break;
  case SORT_DISKSLOT: {
    if (type != COLTYPE_STRING)
      return;
    // Parse every location once; a null text is marked unparsed.
    std::vector<std::pair<int, int>> keys(static_cast<std::size_t>(n));
    for (int r = 0; r < n; ++r)
      if (cell(r))
        keys[static_cast<std::size_t>(r)] = diskSlot(reinterpret_cast<const char *>(cell(r)));
    if (allPresent) {
      std::stable_sort(order, order + n, [&](int x, int y) {
        return keys[static_cast<std::size_t>(x)] < keys[static_cast<std::size_t>(y)];
      });
      return;
    }
    auto greater = [&](int x, int y) {
      return cell(x) && cell(y) &&
             keys[static_cast<std::size_t>(x)] > keys[static_cast<std::size_t>(y)];
    };
    for (int i = 1; i < n; ++i) {
      int key = order[i], j = i;
      for (; j > 0 && greater(order[j - 1], key); --j)
        order[j] = order[j - 1];
      order[j] = key;
    }
    return;
  }
  default:
    return; // SORT_SIZE and unknown sort types compare everything equal
  }

  // Texts with gaps: the insertion sort itself.
  for (int i = 1; i < n; ++i) {
    int key = order[i], j = i;
    for (; j > 0 && QEL_compare(sortType, type, cell(order[j - 1]), cell(key)) > 0; --j)
      order[j] = order[j - 1];
    order[j] = key;
  }
}

// --- Choosing columns and ordering rows --------------------------------------

void QEL_SelectColumns(QEL_DESC *desc, const GS_TokenValues *columns, int count) {
  if (!desc || count < 0 || (count > 0 && !columns))
    return;
  const int n = desc->numColumns;
  std::vector<int> chosen;
  for (int i = 0; i < count; ++i) {
    int found = -1;
    for (int c = 0; c < n && found < 0; ++c)
      if (desc->pColumns[c].keywordId == columns[i] &&
          std::find(chosen.begin(), chosen.end(), c) == chosen.end())
        found = c;
    if (found < 0) {
      logErrorPrint("QEL_SelectColumns: table %s has no column %s", keywordText(desc->tableId),
                    keywordText(columns[i]));
      return;
    }
    chosen.push_back(found);
  }
  // Nested tables of the columns left out are released now: nothing visits
  // them again.
  for (int c = 0; c < n; ++c) {
    if (std::find(chosen.begin(), chosen.end(), c) != chosen.end() ||
        qel_detail::columnType(desc, c) != COLTYPE_QEL)
      continue;
    for (int r = 0; r < desc->numRows; ++r) {
      QEL_CELL &cell = cellAt(desc, r, c);
      QEL_Free(reinterpret_cast<QEL_DESC *>(cell));
      cell = 0;
    }
  }
  std::vector<_QEL_COLUMN_DESC> described(desc->pColumns, desc->pColumns + n);
  std::vector<QEL_CELL> row(static_cast<std::size_t>(n));
  for (int i = 0; i < count; ++i)
    desc->pColumns[i] = described[static_cast<std::size_t>(chosen[static_cast<std::size_t>(i)])];
  for (int r = 0; r < desc->numRows; ++r) {
    std::copy(&cellAt(desc, r, 0), &cellAt(desc, r, 0) + n, row.begin());
    for (int i = 0; i < desc->maxColumns; ++i)
      cellAt(desc, r, i) = i < count ? row[static_cast<std::size_t>(chosen[static_cast<std::size_t>(i)])] : 0;
  }
  desc->numColumns = count;
}

namespace {

// The order of two cells of a column for QEL_SortRows: the catalogue's
// comparison for the column's sort type where it applies to the column's
// type; otherwise by the type (numbers, sizes and texts as numbers or
// text). A missing text sorts first.
int rowCompare(const PropertyMetaData &p, QEL_CELL a, QEL_CELL b) {
  const bool text = qel_detail::holdsPointer(p.type);
  if (text && (!a || !b))
    return (a != 0) - (b != 0);
  const bool applies = p.sortType == SORT_DISKSLOT   ? p.type == COLTYPE_STRING
                       : p.sortType == SORT_STRING  ? p.type == COLTYPE_STRING ||
                                                          p.type == COLTYPE_STRING_N ||
                                                          p.type == COLTYPE_HEX_STRING
                       : p.sortType == SORT_INTEGER || p.sortType == SORT_DATETIME ? !text
                                                                                  : false;
  if (applies)
    return QEL_compare(p.sortType, p.type, a, b);
  switch (p.type) {
  case COLTYPE_U64:
  case COLTYPE_BLOCKS:
  case COLTYPE_BLOCKS2BYTES:
    return threeWay(std::strtoull(reinterpret_cast<const char *>(a), nullptr, 10),
                    std::strtoull(reinterpret_cast<const char *>(b), nullptr, 10));
  case COLTYPE_I32:
    return threeWay(static_cast<std::int32_t>(a), static_cast<std::int32_t>(b));
  case COLTYPE_STRING:
  case COLTYPE_STRING_N:
  case COLTYPE_HEX_STRING:
    return std::strcmp(reinterpret_cast<const char *>(a), reinterpret_cast<const char *>(b));
  case COLTYPE_QEL:
    return 0;
  default:
    return threeWay(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b));
  }
}

} // namespace

int QEL_CompareRows(const QEL_DESC *a, int rowA, const QEL_DESC *b, int rowB) {
  if (!a || !b || a->tableId != b->tableId || rowA < 0 || rowA >= a->numRows || rowB < 0 ||
      rowB >= b->numRows) {
    logErrorPrint("QEL_CompareRows: rows %d and %d of %s and %s cannot be compared", rowA, rowB,
                  a ? keywordText(a->tableId) : "(null)", b ? keywordText(b->tableId) : "(null)");
    return 0;
  }
  // The sort column: the last one the catalogue marks, as SORTOutput finds it.
  int column = -1;
  for (int c = 0; c < a->numColumns; ++c)
    if (a->pColumns[c].pProperty && a->pColumns[c].pProperty->sort)
      column = c;
  if (column < 0 || column >= b->numColumns)
    return 0;
  const PropertyMetaData &p = *a->pColumns[column].pProperty;
  auto *da = const_cast<QEL_DESC *>(a);
  auto *db = const_cast<QEL_DESC *>(b);
  const QEL_CELL x = cellAt(da, rowA, column), y = cellAt(db, rowB, column);
  if (qel_detail::holdsPointer(p.type) && (!x || !y))
    return (x != 0) - (y != 0);
  return QEL_compare(p.sortType, p.type, x, y);
}

void QEL_SortRows(QEL_DESC *desc, GS_TokenValues column, bool descending) {
  if (!desc)
    return;
  int c = 0;
  while (c < desc->numColumns && desc->pColumns[c].keywordId != column)
    ++c;
  if (c == desc->numColumns || !desc->pColumns[c].pProperty) {
    logErrorPrint("QEL_SortRows: table %s has no column %s", keywordText(desc->tableId),
                  keywordText(column));
    return;
  }
  const PropertyMetaData &p = *desc->pColumns[c].pProperty;
  const int n = desc->numRows;
  std::vector<int> order(static_cast<std::size_t>(n));
  for (int r = 0; r < n; ++r)
    order[static_cast<std::size_t>(r)] = r;
  std::stable_sort(order.begin(), order.end(), [&](int x, int y) {
    const int k = rowCompare(p, cellAt(desc, x, c), cellAt(desc, y, c));
    return descending ? k > 0 : k < 0;
  });
  const std::size_t width = static_cast<std::size_t>(desc->maxColumns);
  std::vector<QEL_CELL> cells(&cellAt(desc, 0, 0), &cellAt(desc, 0, 0) + n * width);
  for (int r = 0; r < n; ++r)
    std::copy(&cells[static_cast<std::size_t>(order[static_cast<std::size_t>(r)]) * width],
              &cells[static_cast<std::size_t>(order[static_cast<std::size_t>(r)]) * width] + width,
              &cellAt(desc, r, 0));
  qel_detail::flagsOf(desc) |= qel_detail::kRowsInCallerOrder;
}

// --- Print dispatch ---------------------------------------------------------

namespace {

constexpr unsigned kDebugPrint = 1193;

const char kDtd[] =
    "<!DOCTYPE RESPONSE [\n"
    "<!--- Response Element. Echoes the request back -->\n"
    "<!ELEMENT RESPONSE (ASC|COMP|OBJECT|LOG_CONTENT)*>\n"
    "<!ATTLIST RESPONSE VERSION CDATA #IMPLIED request CDATA #IMPLIED>\n"
    "<!--- Object Definition. Essentially the object can only contain properties. "
    "OID is unique per object only in each request -->\n"
    "<!ELEMENT OBJECT (PROPERTY|OBJECT)*>\n"
    "<!ATTLIST OBJECT oid CDATA #REQUIRED name CDATA #IMPLIED basetype CDATA #IMPLIED "
    "format (pairs|rows|packed|labeled|status) #IMPLIED >\n"
    "<!--- Property definition -->\n"
    "<!ELEMENT PROPERTY (#PCDATA)>\n"
    "<!ATTLIST PROPERTY \n"
    "    display-name CDATA #IMPLIED \n"
    "    draw (true|false) #IMPLIED \n"
    "    size CDATA #IMPLIED \n"
    "    type (string|uint8|uint16|uint32|uint64|int8|int16|int32|int64|bool|enum) #IMPLIED \n"
    "    key (true|false) #IMPLIED \n"
    "    name CDATA #REQUIRED\n"
    "    units CDATA #IMPLIED\n"
    "    blocksize CDATA #IMPLIED\n"
    ">\n"
    "<!--- Composition, P is the part component, G is the grouping component -->\n"
    "<!ELEMENT COMP EMPTY>\n"
    "<!ATTLIST COMP P IDREF #REQUIRED G IDREF #REQUIRED>\n"
    "  <!--- Simple Association, A and B are the oids of the Objects -->\n"
    "<!ELEMENT ASC EMPTY>\n"
    "<!ATTLIST ASC A IDREF #REQUIRED B IDREF #REQUIRED>\n"
    "<!ELEMENT LOG_CONTENT (#PCDATA)>\n"
    "] >\n";

// The source lines the unknown-output-type error has always carried, in the
// log record and in the printed text; log readers and clients match on them.
constexpr int kUnknownTypeLogLine = 648;
constexpr int kUnknownTypeTextLine = 649;

void debugPrint(const char *line) {
  if (IsDebugOn(kDebugPrint))
    logDebugPrint("%s", line);
}

} // namespace

const char *getDTDString() { return kDtd; }

namespace {

using services::user::Preferences;

// Logs and reports an output type no renderer serves.
void unrecognised(Preferences::OutputType type, utility::PutStream &stream) {
  const char *text = keywordText(type);
  framework::Logger::StaticLogMethod(
      0,
      "void QEL_Print_Data(QEL_DESC*, services::user::Session*, "
      "utility::PutStream&, bool, bool, const char*)",
      kUnknownTypeLogLine, "ERROR: Unrecognized output format %d (%s)", static_cast<int>(type),
      text);
  stream.PutF("Error: Unrecognized output format (line - %d)type %d (%s)\n", kUnknownTypeTextLine,
              static_cast<int>(type), text);
}

template <typename R, typename... Args> Renderer *make(Args &&...args) {
  void *block = framework::Memory::StaticAlloc(sizeof(R));
  return block ? new (block) R(std::forward<Args>(args)...) : nullptr;
}

// The renderer of the session's output type (null: out of memory, or a type
// no renderer serves: \p known says which). Console tables go to \p stream
// when \p includeDtd is set.
Renderer *makeRenderer(services::user::Session *session, utility::PutStream &stream,
                       bool includeDtd, bool &known) {
  known = true;
  switch (session->getPreferences().getOutputFormat()) {
  case Preferences::OUTPUT_TAG:
    return make<TagRenderer>(session);
  case Preferences::OUTPUT_API:
  case Preferences::OUTPUT_API_BRIEF:
  case Preferences::OUTPUT_XML2:
  case Preferences::OUTPUT_XML2_BRIEF:
    return make<XMLRenderer>(session);
  case Preferences::OUTPUT_JSON:
  case Preferences::OUTPUT_JSON_ALT:
    return make<JSONRenderer>(session);
  case Preferences::OUTPUT_JSON_STD:
  case Preferences::OUTPUT_NDJSON:
    return make<StdJSONRenderer>(session, stream);
  case Preferences::OUTPUT_CSV:
  case Preferences::OUTPUT_TSV:
    return make<CSVRenderer>(session, stream);
  case Preferences::OUTPUT_HTML:
    return make<HTMLRenderer>(session, stream);
  case Preferences::OUTPUT_CONSOLE:
    debugPrint("QEL_Print_Data: Printing with ConsoleRenderer");
    return includeDtd ? make<ConsoleRenderer>(session, stream) : make<ConsoleRenderer>(session);
  default:
    known = false;
    return nullptr;
  }
}

void destroy(Renderer *renderer) {
  if (!renderer)
    return;
  renderer->~Renderer();
  framework::Memory::StaticFree(renderer);
}

} // namespace

// One paged print: its renderer lives from open to close, so object ids,
// plans and the console's widths carry from page to page.
struct QEL_PRINT {
  Renderer *renderer;         ///< owned
  utility::PutStream *stream; ///< where the envelope goes; not owned
  bool stopped;               ///< no more pages are printed
};

void QEL_Print_Data(QEL_DESC *head, services::user::Session *session,
                    utility::PutStream &stream, bool includeDtd,
                    bool includeXmlDeclaration, const char *request) {
  if (!session)
    return;
  stream.setSilentTruncation(true);
  debugPrint("QEL_Print_Data: Enter");
  bool known = true;
  Renderer *renderer = makeRenderer(session, stream, includeDtd, known);
  if (!renderer) {
    if (known)
      framework::Logger::StaticLog(0, "QEL_Print_Data: out of memory; nothing is printed");
    else
      unrecognised(session->getPreferences().getOutputFormat(), stream);
    return;
  }
  const Renderer::DocumentOptions options{includeDtd, includeXmlDeclaration, request};
  renderer->documentTo(stream, &options);
  if (session->getPreferences().getOutputFormat() == Preferences::OUTPUT_CONSOLE)
    debugPrint("QEL_Print_Data: Printing Table");
  renderer->PrintTable(head, 0, 0);
  renderer->documentTo(stream, nullptr);
  destroy(renderer);
}

QEL_PRINT *QEL_PrintOpen(services::user::Session *session, utility::PutStream &stream,
                         bool includeDtd, bool includeXmlDeclaration, const char *request) {
  if (!session)
    return nullptr;
  stream.setSilentTruncation(true);
  bool known = true;
  Renderer *renderer = makeRenderer(session, stream, includeDtd, known);
  auto *print = renderer ? static_cast<QEL_PRINT *>(framework::Memory::StaticAlloc(sizeof(QEL_PRINT)))
                         : nullptr;
  if (!print) {
    destroy(renderer);
    if (known)
      framework::Logger::StaticLog(0, "QEL_PrintOpen: out of memory");
    else
      unrecognised(session->getPreferences().getOutputFormat(), stream);
    return nullptr;
  }
  *print = {renderer, &stream, false};
  const Renderer::DocumentOptions options{includeDtd, includeXmlDeclaration, request};
  renderer->documentTo(stream, &options);
  return print;
}

bool QEL_PrintPage(QEL_PRINT *print, QEL_DESC *head) {
  if (!print || print->stopped)
    return false;
  Renderer &r = *print->renderer;
  if (!r.PrintPage(head)) {
    print->stopped = true;
    return false;
  }
  // A sink that takes no more text ends the print here rather than after
  // rendering every remaining page into nothing.
  if ((r.outputStream && r.outputStream->isOutputStreamInError()) ||
      print->stream->isOutputStreamInError()) {
    framework::Logger::StaticLog(
        0, "QEL_PrintPage: the output stream is full or failed; the print stops");
    print->stopped = true;
    return false;
  }
  return true;
}

void QEL_PrintClose(QEL_PRINT *print) {
  if (!print)
    return;
  print->renderer->endPages();
  print->renderer->documentTo(*print->stream, nullptr);
  destroy(print->renderer);
  framework::Memory::StaticFree(print);
}
