// Cell filling: the generic store by column type, the nineteen typed
// operations that check the caller's idea of the type, and width tracking.
#include <qel/cli_qel.h>
#include <qel/internal.h>

#include <qel/platform/debug.h>
#include <qel/platform/framework.h>
#include <qel/platform/helpers.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using qel_detail::cellAt;
using qel_detail::text;

namespace {

// The API name of a descriptor's column for messages; "?" for a column the
// descriptor does not describe.
const char *columnName(const QEL_DESC *desc, int column) {
  if (column < 0 || column >= desc->numColumns)
    return "?";
  return text(getAPIName(desc->pColumns[column].keywordId));
}

const char *tableName(const QEL_DESC *desc) { return text(getAPIName(desc->tableId)); }

} // namespace

namespace qel_detail {

// Chunks start at 4 KB and double up to 256 KB, so a table of any size
// costs a few allocations per megabyte of text. A copy that would take more
// than a quarter of a fresh chunk gets a chunk of its own, kept behind the
// current one so that the current one goes on filling.
char *textStorage(QEL_DESC *desc, std::size_t size) {
  constexpr std::size_t kFirst = 4096, kLargest = 256 * 1024;
  auto *current = reinterpret_cast<TextChunk *>(chunksOf(desc));
  if (current && current->size - current->used >= size) {
    char *p = reinterpret_cast<char *>(current + 1) + current->used;
    current->used += size;
    return p;
  }
  const std::size_t next = current ? std::min(current->size * 2, kLargest) : kFirst;
  const bool own = size > next / 4;
  const std::size_t chunkSize = own ? size : next;
  auto *chunk =
      static_cast<TextChunk *>(framework::Memory::StaticAlloc(sizeof(TextChunk) + chunkSize));
  if (!chunk)
    return nullptr;
  chunk->size = chunkSize;
  chunk->used = size;
  if (own && current) {
    chunk->next = current->next;
    current->next = chunk;
  } else {
    chunk->next = current;
    chunksOf(desc) = reinterpret_cast<QEL_CELL>(chunk);
  }
  return reinterpret_cast<char *>(chunk + 1);
}

void freeTextStorage(QEL_DESC *desc) {
  for (auto *c = reinterpret_cast<TextChunk *>(chunksOf(desc)); c;) {
    TextChunk *next = c->next;
    framework::Memory::StaticFree(c);
    c = next;
  }
  chunksOf(desc) = 0;
}

} // namespace qel_detail

namespace {

// Storage for a copy of \p size bytes (NUL included) in cell (row, column):
// the cell's earlier copy when it is long enough (a cell filled again and
// again does not grow the table), else new storage. Null when memory runs
// out; the failure is logged.
char *copyStorage(QEL_DESC *desc, int row, int column, std::size_t size) {
  const char *old = reinterpret_cast<const char *>(cellAt(desc, row, column));
  if (old && std::strlen(old) + 1 >= size)
    return const_cast<char *>(old);
  char *copy = qel_detail::textStorage(desc, size);
  if (!copy)
    logErrorPrint("QEL_FillColumn():: malloc failed");
  return copy;
}

// Stores a copy of \p value (or of " " for null, reporting it with
// \p nullMessage); false when the copy cannot be allocated.
bool storeText(QEL_DESC *desc, int column, int row, const char *value,
               const char *nullMessage) {
  if (!value) {
    logErrorPrint(nullMessage, tableName(desc), columnName(desc, column), column, row);
    value = " ";
  }
  const std::size_t size = std::strlen(value) + 1;
  char *copy = copyStorage(desc, row, column, size);
  if (!copy)
    return false;
  std::memmove(copy, value, size);
  cellAt(desc, row, column) = reinterpret_cast<QEL_CELL>(copy);
  return true;
}

// STRING_N and HEX_STRING: exactly the property's size in bytes, then NUL.
// A null value stores the placeholder " " padded with NULs to the same
// length, so readers that take `size` bytes never run past the copy.
bool storeFixed(QEL_DESC *desc, int column, int row, const char *value) {
  const PropertyMetaData *p =
      column < desc->numColumns ? desc->pColumns[column].pProperty : nullptr;
  const std::size_t size = p && p->size > 0 ? static_cast<std::size_t>(p->size) : 0;
  if (!value)
    logErrorPrint("QEL_FillColumn: COLTYPE_STRING_N or HEX_STRING. data=0 "
                  "tableID=%s columnID=%s col=%d row=%d",
                  tableName(desc), columnName(desc, column), column, row);
  // Every copy of the column has this one length (a fixed copy may hold
  // NULs, so its strlen says nothing): a cell's earlier copy is reused.
  const std::size_t length = std::max<std::size_t>(size + 1, 2);
  char *copy = cellAt(desc, row, column)
                   ? reinterpret_cast<char *>(cellAt(desc, row, column))
                   : qel_detail::textStorage(desc, length);
  if (!copy) {
    logErrorPrint("QEL_FillColumn():: malloc failed");
    return false;
  }
  if (value) {
    std::memmove(copy, value, size);
    copy[size] = '\0';
  } else {
    std::memset(copy, 0, length);
    copy[0] = ' ';
  }
  cellAt(desc, row, column) = reinterpret_cast<QEL_CELL>(copy);
  return true;
}

// Raises a width-tracking column's width to \p length (kept to 8 bits).
void track(_QEL_COLUMN_DESC &col, std::size_t length) {
  if (col.pProperty && col.pProperty->trackWidth && col.width < length)
    col.width = static_cast<std::uint8_t>(length);
}

void trackSize(services::user::Session *session, _QEL_COLUMN_DESC &col,
               const char *stored) {
  if (!col.pProperty || !col.pProperty->trackWidth || std::strcmp(stored, "N/A") == 0)
    return;
  services::user::Preferences defaults;
  const services::user::Preferences &prefs =
      session ? session->getPreferences() : defaults;
  char number[20], units[20];
  getSizeString(static_cast<std::uint64_t>(std::atoll(stored)) * 512,
                prefs.getStorageSizeUnits(), prefs.getStorageSizePrecision(),
                prefs.getStorageSizeBase(), number, units);
  stripLeadingTrailingWhiteSpace(number);
  track(col, std::strlen(number) + std::strlen(units));
}

void trackDecoded(_QEL_COLUMN_DESC &col, std::uint32_t value) {
  if (!col.pProperty || !col.pProperty->trackWidth || !col.pProperty->decoder)
    return;
  // A 512-byte scratch without silent truncation: a longer text raises,
  // and then the width is left as it was.
  qel_detail::ScratchStream<512> scratch;
  try {
    col.pProperty->decoder(scratch, value);
  } catch (framework::Exception *e) {
    delete e;
    return;
  }
  track(col, static_cast<std::size_t>(scratch.ReadAvailable()));
}

// The generic store. \p isPointer says which kind of value the caller gave.
void fill(services::user::Session *session, QEL_DESC *desc, int column, int row,
          QEL_CELL value, bool isPointer) {
  if (!desc)
    return;
  if (column < 0 || column >= desc->maxColumns || row < 0 || row >= desc->maxRows) {
    char message[200];
    std::snprintf(message, sizeof message,
                  "QEL_FillColumn: table %s, column %s (%d) exceeded maximum "
                  "allowable rows/columns\n",
                  tableName(desc), columnName(desc, column), column);
    logErrorPrint("%s", message);
    assertEngOnly(false, message);
    return;
  }
  const ColumnDataType type = getColumnType(desc->tableId, column);
  if (!isPointer && value != 0 && qel_detail::holdsPointer(type)) {
    char message[200];
    std::snprintf(message, sizeof message,
                  "QEL_FillColumn: table %s, column %s (%d) holds %s values; "
                  "the number %u is not stored",
                  tableName(desc), columnName(desc, column), column,
                  getDataTypeStr(type), static_cast<unsigned>(value));
    logErrorPrint("%s", message);
    assertEngOnly(false, message);
    return;
  }
  if (row + 1 > desc->numRows)
    desc->numRows = row + 1;
  QEL_CELL &cell = cellAt(desc, row, column);
  _QEL_COLUMN_DESC *col = column < desc->numColumns ? &desc->pColumns[column] : nullptr;
  const char *textValue = reinterpret_cast<const char *>(value);

  switch (type) {
  case COLTYPE_STRING:
    if (storeText(desc, column, row, textValue,
                  "QEL_FillColumn: COLTYPE_STRING. data=0 tableID=%s "
                  "columnID=%s col=%d row=%d") &&
        col && col->pProperty && col->pProperty->trackWidth) {
      std::size_t len = std::strlen(reinterpret_cast<const char *>(cell));
      if (col->width <= len)
        col->width = static_cast<std::uint8_t>(len + 1);
    }
    break;
  case COLTYPE_STRING_N:
  case COLTYPE_HEX_STRING:
    storeFixed(desc, column, row, textValue);
    break;
  case COLTYPE_U64:
  case COLTYPE_BLOCKS:
  case COLTYPE_BLOCKS2BYTES:
    if (!storeText(desc, column, row, textValue,
                   "QEL_FillColumn: COLTYPE_U64 or BLOCKS. data=0 tableID=%s "
                   "columnID=%s col=%d row=%d") || !col)
      break;
    if (type == COLTYPE_U64) {
      if (col->pProperty && col->pProperty->trackWidth) {
        std::size_t len = std::strlen(reinterpret_cast<const char *>(cell));
        if (col->width <= len)
          col->width = static_cast<std::uint8_t>(len + 1);
      }
    } else {
      trackSize(session, *col, reinterpret_cast<const char *>(cell));
    }
    break;
  case COLTYPE_QEL:
    // The descriptor takes the nested chain over; one it held before in this
    // cell is released (unless it is the same one again).
    if (cell && cell != value)
      QEL_Free(reinterpret_cast<QEL_DESC *>(cell));
    cell = value;
    break;
  default:
    // Numbers, including ENUM and ENUMTOKEN values. A pointer given for a
    // number column is stored as a number.
    cell = static_cast<std::uint32_t>(value);
    if ((type == COLTYPE_ENUM || type == COLTYPE_ENUMTOKEN) && col)
      trackDecoded(*col, static_cast<std::uint32_t>(value));
    break;
  }
}

// The typed operations' check: reports a column of another type, and says
// whether the value may be stored. A number never goes into a pointer cell,
// and a nested descriptor and a text never go into each other's cells: the
// cell would be printed and freed as what it is not.
bool checkType(QEL_DESC *desc, int column, int row, ColumnDataType expected,
               const char *mismatchFormat, bool valueIsPointer) {
  const ColumnDataType actual = getColumnType(desc->tableId, column);
  if (actual == expected)
    return true;
  char message[200];
  std::snprintf(message, sizeof message, mismatchFormat, getDataTypeStr(actual),
                columnName(desc, column), tableName(desc), column, row);
  assertEngOnly(false, message);
  if (!qel_detail::holdsPointer(actual))
    return true;
  return valueIsPointer && (expected == COLTYPE_QEL) == (actual == COLTYPE_QEL);
}

void typedNumber(services::user::Session *session, QEL_DESC *desc, int column,
                 int row, ColumnDataType expected, const char *format,
                 std::uint32_t value) {
  if (desc && checkType(desc, column, row, expected, format, false))
    fill(session, desc, column, row, value, false);
}

void typedPointer(services::user::Session *session, QEL_DESC *desc, int column,
                  int row, ColumnDataType expected, const char *format,
                  const void *value) {
  if (desc && checkType(desc, column, row, expected, format, true))
    fill(session, desc, column, row, reinterpret_cast<QEL_CELL>(value), true);
}

} // namespace

void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc, int column,
                    int row, std::uint32_t value) {
  fill(session, desc, column, row, value, false);
}

void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc, int column,
                    int row, int value) {
  fill(session, desc, column, row, static_cast<std::uint32_t>(value), false);
}

void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc, int column,
                    int row, const void *value) {
  fill(session, desc, column, row, reinterpret_cast<QEL_CELL>(value), true);
}

#define QEL_TYPED_NUMBER(Name, ValueType, Type, TypeName)                       \
  void QEL_FillColumn##Name(services::user::Session *session, QEL_DESC *desc,  \
                            int column, int row, ValueType value) {            \
    typedNumber(session, desc, column, row, Type,                              \
                "Invalid QEL Type (" TypeName ") - got %s for %s in table %s (%d,%d)", \
                static_cast<std::uint32_t>(value));                            \
  }
#define QEL_TYPED_POINTER(Name, ValueType, Type, TypeName)                      \
  void QEL_FillColumn##Name(services::user::Session *session, QEL_DESC *desc,  \
                            int column, int row, ValueType value) {            \
    typedPointer(session, desc, column, row, Type,                             \
                 "Invalid QEL Type (" TypeName ") - got %s for %s in table %s (%d,%d)", \
                 value);                                                       \
  }

QEL_TYPED_NUMBER(Hex8, std::uint8_t, COLTYPE_HEX8, "HEX8")
QEL_TYPED_NUMBER(Hex32, std::uint32_t, COLTYPE_HEX32, "HEX32")
QEL_TYPED_NUMBER(U8, std::uint8_t, COLTYPE_U8, "U8")
QEL_TYPED_NUMBER(U32, std::uint32_t, COLTYPE_U32, "U32")
QEL_TYPED_POINTER(String, const char *, COLTYPE_STRING, "STRING")
QEL_TYPED_POINTER(QEL, QEL_DESC *, COLTYPE_QEL, "QEL")
QEL_TYPED_NUMBER(Enum, std::uint32_t, COLTYPE_ENUM, "ENUM")
QEL_TYPED_NUMBER(EnumToken, std::uint32_t, COLTYPE_ENUMTOKEN, "ENUMTOKEN")
QEL_TYPED_NUMBER(Index, std::uint32_t, COLTYPE_INDEX, "INDEX")
QEL_TYPED_POINTER(U64, const char *, COLTYPE_U64, "U64")
QEL_TYPED_NUMBER(I32, std::int32_t, COLTYPE_I32, "I32")
QEL_TYPED_POINTER(HexString, const std::uint8_t *, COLTYPE_HEX_STRING, "HEX_STRING")
QEL_TYPED_NUMBER(U16, std::uint16_t, COLTYPE_U16, "U16")
QEL_TYPED_POINTER(StringN, const char *, COLTYPE_STRING_N, "STRING_N")
QEL_TYPED_POINTER(Blocks, const char *, COLTYPE_BLOCKS, "BLOCKS")
QEL_TYPED_POINTER(Blocks2Bytes, const char *, COLTYPE_BLOCKS2BYTES, "BLOCKS2BYTES")
QEL_TYPED_NUMBER(DateTime, std::uint32_t, COLTYPE_DATETIME, "DATETIME")
QEL_TYPED_NUMBER(Time, std::uint32_t, COLTYPE_TIME, "TIME")

void QEL_FillColumnDouble(services::user::Session *session, QEL_DESC *desc,
                          int column, int row, double value) {
  // Toward zero, saturated to the 32-bit range (NaN reads as 0).
  std::uint32_t n = 0;
  if (value >= 4294967295.0)
    n = 4294967295u;
  else if (value >= 1.0)
    n = static_cast<std::uint32_t>(std::trunc(value));
  typedNumber(session, desc, column, row, COLTYPE_DOUBLE,
              "Invalid QEL Type (DOUBLE) - got %s for %s in table %s (%d,%d)", n);
}
