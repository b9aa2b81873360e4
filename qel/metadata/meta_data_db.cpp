// The table registry and the type and sort names.
#include <qel/metadata/meta_data_db.h>

#include <qel/fieldnames/fieldnames.h>

#include <qel/platform/debug.h>
#include <qel/platform/framework.h>

#include <algorithm>
#include <climits>
#include <iterator>

TableMetaDataManager *TableMetaDataManager::m_Instance = nullptr;

namespace {
constexpr unsigned kRegistryDebug = 1192; // the descriptor API's category
} // namespace

const char *getDataTypeStr(ColumnDataType type) {
  switch (type) {
  case COLTYPE_HEX8:
  case COLTYPE_U8:
    return "uint8";
  case COLTYPE_HEX32:
  case COLTYPE_U32:
  case COLTYPE_INDEX:
    return "uint32";
  case COLTYPE_STRING:
  case COLTYPE_ENUM:
  case COLTYPE_HEX_STRING:
  case COLTYPE_STRING_N:
  case COLTYPE_BLOCKS:
  case COLTYPE_DATETIME:
  case COLTYPE_TIME:
  case COLTYPE_ENUMTOKEN:
  case COLTYPE_BLOCKS2BYTES:
    return "string";
  case COLTYPE_QEL:
    return "object";
  case COLTYPE_DOUBLE:
    return "double";
  case COLTYPE_U64:
    return "uint64";
  case COLTYPE_I32:
    return "sint32";
  case COLTYPE_U16:
    return "uint16";
  default:
    return "unknown";
  }
}

const char *getSortType(SortType type) {
  switch (type) {
  case SORT_DISKSLOT:
    return "diskslot";
  case SORT_DATETIME:
    return "datetime";
  case SORT_STRING:
    return "string";
  case SORT_INTEGER:
    return "integer";
  case SORT_SIZE:
    return "size";
  default:
    return "nosort";
  }
}

ColumnDataType getColumnType(GS_TokenValues table, int column) {
  const TableMetaData *t =
      TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)->getTable(table);
  if (!t || column < 0 || column >= t->getNumColumns())
    return COLTYPE_UNKNOWN;
  return t->getColumnType(column);
}

// --- TableMetaData ----------------------------------------------------------

TableMetaData::TableMetaData(GS_TokenValues tableId,
                             PropertyMetaData *properties, int numColumns,
                             bool wbi, const char *primaryKey,
                             const char *parentBasetype,
                             const char *parentKeyProp)
    : tableId(tableId), properties(properties), numColumns(numColumns),
      wbi(wbi), primaryKey(primaryKey), parentBasetype(parentBasetype),
      parentKeyProp(parentKeyProp) {}

// --- TableMetaDataManager ---------------------------------------------------

TableMetaDataManager::TableMetaDataManager() : currentLocale(LOCALE_EN) {
  for (TableMetaData *&slot : tables)
    slot = nullptr;
}

TableMetaDataManager *
TableMetaDataManager::getTableMetaDataManager(LocaleCode locale) {
  TableMetaDataManager *instance = __atomic_load_n(&m_Instance, __ATOMIC_ACQUIRE);
  if (!instance) {
    // Created once, even when the first calls race.
    static TableMetaDataManager *const created = new TableMetaDataManager();
    instance = created;
    __atomic_store_n(&m_Instance, instance, __ATOMIC_RELEASE);
  }
  instance->setLocale(locale);
  return instance;
}

void TableMetaDataManager::setLocale(LocaleCode locale) {
  // Every fill passes through here; storing only on a change keeps the shared
  // field from bouncing between the cores of concurrent command handlers.
  if (__atomic_load_n(&currentLocale, __ATOMIC_RELAXED) != locale)
    __atomic_store_n(&currentLocale, static_cast<std::uint32_t>(locale), __ATOMIC_RELAXED);
}

LocaleCode TableMetaDataManager::getLocale() const {
  return static_cast<LocaleCode>(__atomic_load_n(&currentLocale, __ATOMIC_RELAXED));
}

int TableMetaDataManager::getTableIndex(GS_TokenValues token) const {
  if (token < 1 || token > strings::StringRepository::kMaxToken)
    return 0;
  return BaseTypeLookupTable[token - 1];
}

TableMetaData *TableMetaDataManager::getTable(GS_TokenValues token) const {
  int index = getTableIndex(token);
  if (index > 0 && index < kIndexedSlots)
    return tables[index];
  // Basetypes without a table index live in the overflow slots.
  for (int i = 0; i < overflowUsed; ++i) {
    TableMetaData *t = tables[kIndexedSlots + i];
    if (t->getTableId() == token)
      return t;
  }
  return index == 0 ? nullptr : tables[0];
}

TableMetaData *TableMetaDataManager::getSlot(int slot) const {
  return slot >= 0 && slot < kSlots ? tables[slot] : nullptr;
}

void TableMetaDataManager::addTable(GS_TokenValues token,
                                    PropertyMetaData *properties,
                                    int numColumns, bool wbi,
                                    const char *primaryKey,
                                    const char *parentBasetype,
                                    const char *parentKeyProp) {
  const char *tokenText = strings::GS.toString(token);
  if (numColumns < 0 || numColumns > kMaxColumns || (numColumns > 0 && !properties)) {
    logErrorPrint("TableMetaDataManager::addTable: table %s: %d columns%s; not registered",
                  tokenText ? tokenText : "", numColumns,
                  properties ? "" : " without properties");
    return;
  }
  // Fixed-size cells copy `size` bytes and a hex string shows size / 2 of
  // them through a 255-byte window: a size outside that would make the
  // copy or the formatter read past the cell.
  for (int i = 0; i < numColumns; ++i) {
    PropertyMetaData &p = properties[i];
    if (p.type != COLTYPE_HEX_STRING && p.type != COLTYPE_STRING_N)
      continue;
    const int limit = p.type == COLTYPE_HEX_STRING ? kMaxHexStringSize : INT_MAX;
    if (p.size >= 0 && p.size <= limit)
      continue;
    const int clamped = p.size < 0 ? 0 : limit;
    const char *columnText = strings::GS.toString(p.keywordId);
    logErrorPrint("TableMetaDataManager::addTable: table %s, column %s: %s size %d "
                  "is outside 0..%d; %d is used",
                  tokenText ? tokenText : "", columnText ? columnText : "",
                  p.type == COLTYPE_HEX_STRING ? "HEX_STRING" : "STRING_N", p.size, limit,
                  clamped);
    p.size = clamped;
  }
  int index = getTableIndex(token);
  TableMetaData *table =
      new TableMetaData(token, properties, numColumns, wbi, primaryKey,
                        parentBasetype, parentKeyProp);
  if (index > 0 && index < kIndexedSlots) {
    tables[index] = table;
    return;
  }
  // The catalogue has more basetypes than indexed slots; its own overflow
  // is by design, so only a later registration is worth a log line.
  static const char kMissing[] =
      "Possibly missing QEL TABLE entry. BaseTypeLookupTable[%d-1] (%s) = %d";
  if (!registeringCatalogue)
    framework::Logger::StaticLog(0, kMissing, static_cast<int>(token),
                                 tokenText ? tokenText : "", index);
  else if (IsDebugOn(kRegistryDebug))
    logDebugPrint(kMissing, static_cast<int>(token), tokenText ? tokenText : "", index);
  // Its own overflow slot: a later registration of the same token replaces
  // it; a full overflow area falls back to slot 0.
  for (int i = 0; i < overflowUsed; ++i) {
    if (tables[kIndexedSlots + i]->getTableId() == token) {
      tables[kIndexedSlots + i] = table;
      return;
    }
  }
  if (overflowUsed < kOverflowSlots)
    tables[kIndexedSlots + overflowUsed++] = table;
  else
    tables[0] = table;
}

void TableMetaDataManager::SetColumnPrint(GS_TokenValues table,
                                          GS_TokenValues column, bool print,
                                          bool draw) {
  TableMetaDataManager *instance = __atomic_load_n(&m_Instance, __ATOMIC_ACQUIRE);
  if (!instance) {
    logErrorPrint(
        "TableMetaDataManager::SetColumnPrint: No TableMetaDataManager instance!");
    return;
  }
  TableMetaData *t = instance->getTable(table);
  const char *tableText = strings::GS.toString(table);
  if (!t) {
    logErrorPrint("TableMetaDataManager::SetColumnPrint: Could not find table %s!",
                  tableText ? tableText : "");
    return;
  }
  for (int i = 0; i < t->getNumColumns(); ++i) {
    PropertyMetaData *p = t->getPropertyDef(i);
    if (p->keywordId == column) {
      p->print = print;
      p->draw = draw;
      return;
    }
  }
  const char *columnText = strings::GS.toString(column);
  logErrorPrint(
      "TableMetaDataManager::SetColumnPrint: Column %s not found in table %s!",
      columnText ? columnText : "", tableText ? tableText : "");
}
