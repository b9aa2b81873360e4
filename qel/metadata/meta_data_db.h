// Table metadata: column data types, sort types, property and table
// definitions, and the registry that holds every table of the catalogue.
//
// The registry is one process-wide object, filled once at start-up
// (initGSables) and read from every thread afterwards. Lookups by basetype
// token are two array reads: the token's table index from
// BaseTypeLookupTable, then the registry slot.
#ifndef QEL_METADATA_META_DATA_DB_H
#define QEL_METADATA_META_DATA_DB_H

#include <qel/platform/export.h>
#include <qel/platform/keywords.h>
#include <qel/platform/locale.h>
#include <qel/platform/user.h>

#include <cstdint>

namespace utility {
class PutStream;
}

/// The data type of a column's cells. The value 255 stands for a table that
/// is not registered.
enum ColumnDataType : std::uint32_t {
  COLTYPE_HEX8 = 0,
  COLTYPE_HEX32 = 1,
  COLTYPE_U8 = 2,
  COLTYPE_U32 = 3,
  COLTYPE_STRING = 4,
  COLTYPE_QEL = 5,
  COLTYPE_DOUBLE = 6,
  COLTYPE_ENUM = 7,
  COLTYPE_INDEX = 8,
  COLTYPE_U64 = 9,
  COLTYPE_I32 = 10,
  COLTYPE_HEX_STRING = 11,
  COLTYPE_U16 = 12,
  COLTYPE_STRING_N = 13,
  COLTYPE_BLOCKS = 14,
  COLTYPE_DATETIME = 15,
  COLTYPE_TIME = 16,
  COLTYPE_ENUMTOKEN = 17,
  COLTYPE_BLOCKS2BYTES = 18,
  COLTYPE_UNKNOWN = 255,
};

/// How two cells of a sort column compare.
enum SortType : std::uint32_t {
  SORT_NONE = 0,
  SORT_DISKSLOT = 1,
  SORT_DATETIME = 2,
  SORT_STRING = 3,
  SORT_INTEGER = 4,
  SORT_SIZE = 5,
};

/// An enumeration decoder: writes the display text of a value.
using EnumDecoder = void (*)(utility::PutStream &, unsigned int);

/// A property's print or draw default: a bool that one thread may change
/// (SetColumnPrint) while others read it (QEL_Create, the metadata
/// documents). Each read and write is a single relaxed atomic access, so a
/// reader sees the old or the new value of each flag, never a torn one; a
/// table created during the change may mix old print and new draw. Copies
/// take the current value.
class PropertyFlag {
public:
  constexpr PropertyFlag(bool on = false) : m_on(on) {}
  PropertyFlag(const PropertyFlag &other) : m_on(bool(other)) {}
  PropertyFlag &operator=(const PropertyFlag &other) { return *this = bool(other); }
  PropertyFlag &operator=(bool on) {
    __atomic_store_n(&m_on, on, __ATOMIC_RELAXED);
    return *this;
  }
  operator bool() const { return __atomic_load_n(&m_on, __ATOMIC_RELAXED); }

private:
  // The compiler's atomic built-ins keep <atomic> out of the public headers.
  bool m_on;
};

/// The definition of one property (column) of a table. Catalogue arrays of
/// it live for the whole process; only `print`, `draw` (SetColumnPrint, from
/// any thread at any time) and the name-column sizes (set at load time)
/// ever change.
struct PropertyMetaData {
  GS_TokenValues keywordId;         ///< the property's keyword
  std::int32_t size;                ///< display width in characters
  ColumnDataType type;              ///< the cells' data type
  GS_TokenValues qualifierNameId;   ///< extra XML attribute name, or 1153
  GS_TokenValues qualifierValueId;  ///< extra XML attribute value, or 1153
  PropertyFlag print;               ///< console print default
  PropertyFlag draw;                ///< XML draw default
  bool key;                         ///< identifies the object
  bool trackWidth;                  ///< console width follows the data
  bool sort;                        ///< rows sort on this (last one wins)
  SortType sortType;                ///< comparison when sorting on it
  EnumDecoder decoder;              ///< ENUM / ENUMTOKEN decoder, or null
};

/// The XML type name of a data type: "uint8", "string", "object", ...;
/// "unknown" for any other value.
QEL_API const char *getDataTypeStr(ColumnDataType type);
/// The sort name: "nosort", "diskslot", "datetime", "string", "integer",
/// "size"; "nosort" for any other value.
QEL_API const char *getSortType(SortType type);
/// The type of a column of a registered table; COLTYPE_UNKNOWN (255) for an
/// unknown table or a column outside it. Constant time, lock-free.
QEL_API ColumnDataType getColumnType(GS_TokenValues table, int column);

/// The definition of one table. Created by the registry, never deleted.
/// (Exported member by member: QEL_API marks the API, nothing else is ABI.)
class TableMetaData {
public:
  QEL_API TableMetaData(GS_TokenValues tableId, PropertyMetaData *properties,
                int numColumns, bool wbi, const char *primaryKey,
                const char *parentBasetype, const char *parentKeyProp);

  GS_TokenValues getTableId() const { return tableId; }
  int getNumColumns() const { return numColumns; }
  /// Entry \p column of the column list; the caller passes a valid column.
  PropertyMetaData *getPropertyDef(int column) const { return properties + column; }
  /// Type of a valid column.
  ColumnDataType getColumnType(int column) const { return properties[column].type; }
  bool isWBI() const { return wbi; }
  const char *getPrimaryKey() const { return primaryKey; }
  const char *getParentBasetype() const { return parentBasetype; }
  const char *getParentKeyProp() const { return parentKeyProp; }

  /// Writes this table's metadata in the family of \p type with object id
  /// \p oid and labels in \p locale.
  QEL_API void renderMetaData(utility::PutStream *stream,
                      services::user::Preferences::OutputType type, int oid,
                      LocaleCode locale);
  /// One property element (the "-numeric" companion when \p numeric).
  QEL_API void renderPropertyMetaDataXML(utility::PutStream *stream, int column,
                                 bool numeric, LocaleCode locale);
  /// One APIProp call (the "-numeric" companion when \p numeric).
  QEL_API void renderPropertyMetaDataJSON(utility::PutStream *stream, int column,
                                  bool numeric, LocaleCode locale);

private:
  GS_TokenValues tableId;
  PropertyMetaData *properties; ///< not owned: a catalogue array
  int numColumns;
  bool wbi;
  const char *primaryKey;       ///< keyword text, "singleton" or "none"
  const char *parentBasetype;   ///< keyword text or "none"
  const char *parentKeyProp;    ///< keyword text or "none"
};

/// The registry of table definitions.
QEL_API void initGSables();

class TableMetaDataManager {
public:
  /// Registry slots addressed by table index (0..132).
  static constexpr int kIndexedSlots = 133;
  /// Slots after them for basetypes without a table index of their own,
  /// taken in registration order and found by token.
  static constexpr int kOverflowSlots = 32;
  static constexpr int kSlots = kIndexedSlots + kOverflowSlots;

  /// The registry, created on the first call; records \p locale as the
  /// current locale. Never null.
  QEL_API static TableMetaDataManager *getTableMetaDataManager(LocaleCode locale);
  /// Changes the print and draw defaults of the first property of \p table
  /// whose keyword is \p column. Logs (logErrorPrint) when there is no
  /// registry, no such table or no such column. Safe from any thread at any
  /// time; descriptors created afterwards take the new defaults, existing
  /// ones keep theirs (see PropertyFlag).
  QEL_API static void SetColumnPrint(GS_TokenValues table, GS_TokenValues column,
                             bool print, bool draw);

  QEL_API void setLocale(LocaleCode locale);
  QEL_API LocaleCode getLocale() const;
  /// Entry token - 1 of BaseTypeLookupTable; 0 outside 1..7626.
  QEL_API int getTableIndex(GS_TokenValues token) const;
  /// The table of a basetype token, or null.
  QEL_API TableMetaData *getTable(GS_TokenValues token) const;
  /// Most columns a table may have (a descriptor counts them in 16 bits).
  static constexpr int kMaxColumns = 65535;
  /// Largest size of a HEX_STRING property: 255 bytes shown as hex.
  static constexpr int kMaxHexStringSize = 510;

  /// Registers a table in the slot of its table index, replacing what the
  /// slot held. A basetype without a table index is logged ("Possibly
  /// missing QEL TABLE entry ...") and kept in an overflow slot of its own;
  /// the catalogue's own eleven such basetypes are expected there, so
  /// start-up reports them as debug lines (category 1192) only. Not registered (logged): a column count
  /// outside 0..kMaxColumns, or columns without properties. A HEX_STRING
  /// size outside 0..kMaxHexStringSize, or a negative STRING_N size, is
  /// logged and clamped into that range in \p properties. Registration
  /// happens at start-up, before other threads use the registry.
  QEL_API void addTable(GS_TokenValues token, PropertyMetaData *properties,
                int numColumns, bool wbi, const char *primaryKey,
                const char *parentBasetype, const char *parentKeyProp);
  /// The table in \p slot (0..kSlots - 1), or null.
  QEL_API TableMetaData *getSlot(int slot) const;

  /// Writes the metadata document of the tables named by \p which (null or
  /// "all", "wbi", a basetype, or basetypes separated by commas) in the
  /// family of \p type, with labels in the current locale. Returns 0.
  QEL_API int renderMetaData(utility::PutStream *stream,
                     services::user::Preferences::OutputType type,
                     const char *which);
  /// As above with the labels' locale given by the caller.
  QEL_API int renderMetaData(utility::PutStream *stream,
                     services::user::Preferences::OutputType type,
                     const char *which, LocaleCode locale);

  /// The registry, once created (read and written atomically).
  QEL_API static TableMetaDataManager *m_Instance;

private:
  friend void initGSables();
  /// The tests' seam (tests/support/registry.h): it saves the slots and puts
  /// them back around a test's own registrations. Nothing of it is part of
  /// the library.
  friend class RegistryTestAccess;
  TableMetaDataManager();

  std::uint32_t currentLocale; ///< shared by all threads (atomic access)
  TableMetaData *tables[kSlots];             ///< slot i: table index i
  int overflowUsed = 0;                      ///< overflow slots taken
  bool registeringCatalogue = false;         ///< inside initGSables
};

/// Registers the whole catalogue (generated from the catalogue source).
QEL_API void initGSables();

/// The metadata command: writes the definitions of the tables named by
/// \p which (null, "all", "wbi", a basetype, or basetypes separated by
/// commas) to the session's output stream, in the session's output type and
/// with labels in the session's locale. Returns 0.
QEL_API int cli_metaHandler(services::user::Session *session, const char *which);

#endif
