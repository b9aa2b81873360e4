// The descriptor API: the output tables that every command handler creates,
// fills, links, sorts, prints and frees.
//
// A QEL_DESC is one table of rows by columns for a registered basetype. Its
// cells are words: a 32-bit number, or a pointer to a NUL-terminated copy or
// a nested descriptor that the descriptor owns (the column's ColumnDataType
// says which). Descriptors link into chains through pNext; QEL_Free on the
// head releases the chain, every owned copy and every nested descriptor.
//
// Nothing here throws. Bad input is reported through the platform's log and
// leaves every descriptor usable.
//
// Threads (see qel.h): every function here may be called from any thread
// once start-up has finished, on descriptors that thread owns. A chain, its
// nested tables and the Session passed along belong to one thread at a
// time; nothing here locks them. The registry they read is shared and safe
// to read concurrently.
#ifndef QEL_CLI_QEL_H
#define QEL_CLI_QEL_H

#include <qel/platform/export.h>
#include <qel/platform/keywords.h>
#include <qel/platform/user.h>
#include <qel/metadata/meta_data_db.h>

#include <cstdint>

namespace utility {
class PutStream;
}

/// A cell: a 32-bit number or a pointer, by the column's type.
using QEL_CELL = std::uintptr_t;

/// Console layouts (consoleFormat); any other value prints as rows.
enum QEL_ConsoleFormat : std::uint8_t {
  QEL_FORMAT_ROWS = 0,
  QEL_FORMAT_PAIRS = 1,
  QEL_FORMAT_PACKED = 2,
  QEL_FORMAT_LABELED = 3,
  QEL_FORMAT_EMBEDDED_ROWS = 4,
  QEL_FORMAT_STATUS = 5,
};

/// One column of a descriptor, copied from its property definition.
struct _QEL_COLUMN_DESC {
  GS_TokenValues qualifierNameId;  ///< extra XML attribute name, or 1153
  GS_TokenValues qualifierValueId; ///< its value, also shown in the header
  std::uint8_t print;              ///< console shows the column when 1
  std::uint8_t draw;               ///< XML draw attribute
  GS_TokenValues keywordId;        ///< identity of the column for lookups
  GS_TokenValues displayId;        ///< keyword shown as the column's name
  std::uint8_t width;              ///< widest text so far (width tracking)
  const PropertyMetaData *pProperty; ///< definition in the registry
};

/// One output table. The block holds the header and maxRows x maxColumns
/// cells, row-major: cell (r, c) is cells[r * maxColumns + c]. The cells are
/// a flexible array member, which C++ has only as an extension of every
/// compiler we support: the pragmas keep -pedantic quiet about it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
struct QEL_DESC {
  GS_TokenValues tableId;      ///< basetype token
  GS_TokenValues nameId;       ///< object name token; 1153 = none
  std::int32_t numRows;        ///< one more than the highest row filled
  std::int32_t numColumns;     ///< column descriptors filled in
  std::int32_t maxRows;        ///< row capacity
  std::int32_t maxColumns;     ///< the table's column count; cell row stride
  std::int32_t allocSize;      ///< (maxRows * maxColumns + 10) * 4
  std::uint8_t consoleFormat;  ///< QEL_ConsoleFormat chosen by the creator
  std::uint8_t printed;        ///< set once the console renderer printed it
  std::uint8_t jsonSeparator;  ///< JSON: comma before it even when empty
  QEL_DESC *pNext;             ///< next descriptor of the chain
  _QEL_COLUMN_DESC *pColumns;  ///< maxColumns column descriptors
  QEL_CELL cells[];            ///< maxRows * maxColumns cells
};
#pragma GCC diagnostic pop

/// The layout name of a descriptor's consoleFormat: "rows", "pairs",
/// "packed", "labeled", "rows", "status", or "none" for other values.
QEL_API const char *getConsoleFormat(QEL_DESC *desc);

/// Creates an empty descriptor for the registered table \p table, named by
/// \p name (1153: none), with room for \p maxRows rows. Null when the table
/// is unknown ("QEL_Create: Could not find table %s" is logged), or when
/// memory runs out or maxRows is negative or too large (debug line only).
/// The output service must be built first (framework::Container::
/// getContainer()->buildService(pGSQel)->Startup(), which runs QEL_Start):
/// before that no table is known, and the logged line says so.
QEL_API QEL_DESC *QEL_Create(services::user::Session *session,
                             GS_TokenValues table, GS_TokenValues name,
                             int maxRows, std::uint8_t consoleFormat);
/// Appends \p child (and the chain it heads) at the end of \p head's chain.
QEL_API void QEL_link(QEL_DESC *head, QEL_DESC *child);
/// The descriptor's allocSize.
QEL_API int QEL_HowBig(QEL_DESC *desc);
/// Releases the chain that \p head starts, its owned texts and nested
/// descriptors. Null is ignored (debug line).
QEL_API void QEL_Free(QEL_DESC *head);
/// Sets the print flag (and the draw flag when \p alsoDraw) of the first
/// column whose keyword is \p column; nothing when there is none.
QEL_API void QEL_SetColumnPrint(QEL_DESC *desc, GS_TokenValues column,
                                std::uint8_t value, bool alsoDraw);
/// Shows the first column whose keyword is \p oldKeyword under
/// \p newKeyword. The match is always on the original keyword.
QEL_API void QEL_RenameColumnKeyword(QEL_DESC *desc,
                                     services::user::Session *session,
                                     GS_TokenValues oldKeyword,
                                     GS_TokenValues newKeyword);

/// Stores a value in cell (\p row, \p column) by the column's type, without
/// checking the caller's idea of it: numbers go into number cells, texts are
/// copied, nested descriptors are taken over. A number for a column that
/// holds pointers is reported and not stored (0 counts as a null pointer).
QEL_API void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc,
                            int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc,
                            int column, int row, int value);
QEL_API void QEL_FillColumn(services::user::Session *session, QEL_DESC *desc,
                            int column, int row, const void *value);

/// Typed fills: each reports a column of another type ("Invalid QEL Type
/// (...)" through assertEngOnly) and then stores the value by the column's
/// real type. Not stored: a number for a pointer column, a nested
/// descriptor for a text column and a text for a nested-table column (the
/// caller keeps such a descriptor).
QEL_API void QEL_FillColumnHex8(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint8_t value);
QEL_API void QEL_FillColumnHex32(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnU8(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint8_t value);
QEL_API void QEL_FillColumnU32(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnString(services::user::Session *session, QEL_DESC *desc, int column, int row, const char *value);
QEL_API void QEL_FillColumnQEL(services::user::Session *session, QEL_DESC *desc, int column, int row, QEL_DESC *value);
/// Stores the value's integer part, saturated to 0..4294967295.
QEL_API void QEL_FillColumnDouble(services::user::Session *session, QEL_DESC *desc, int column, int row, double value);
QEL_API void QEL_FillColumnEnum(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnEnumToken(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnIndex(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnU64(services::user::Session *session, QEL_DESC *desc, int column, int row, const char *value);
QEL_API void QEL_FillColumnI32(services::user::Session *session, QEL_DESC *desc, int column, int row, std::int32_t value);
/// Copies exactly the property's size in bytes from \p value.
QEL_API void QEL_FillColumnHexString(services::user::Session *session, QEL_DESC *desc, int column, int row, const std::uint8_t *value);
QEL_API void QEL_FillColumnU16(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint16_t value);
/// Copies exactly the property's size in bytes from \p value.
QEL_API void QEL_FillColumnStringN(services::user::Session *session, QEL_DESC *desc, int column, int row, const char *value);
QEL_API void QEL_FillColumnBlocks(services::user::Session *session, QEL_DESC *desc, int column, int row, const char *value);
QEL_API void QEL_FillColumnBlocks2Bytes(services::user::Session *session, QEL_DESC *desc, int column, int row, const char *value);
QEL_API void QEL_FillColumnDateTime(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);
QEL_API void QEL_FillColumnTime(services::user::Session *session, QEL_DESC *desc, int column, int row, std::uint32_t value);

/// Fills \p order (numRows entries) with the rows in print order, sorted on
/// the table's last sort column; stable; cells are not moved.
QEL_API void SORTOutput(QEL_DESC *desc, int *order);
/// Compares two cells of a sort column: negative, 0 (equal or not
/// comparable) or positive.
QEL_API int QEL_compare(SortType sortType, ColumnDataType type, QEL_CELL a,
                        QEL_CELL b);

/// Chooses the columns \p desc prints, and their order: exactly the
/// \p count columns whose keywords \p columns names (a keyword named twice
/// takes the next column of that keyword). Call it once the descriptor is
/// filled: the cells move with their columns, the nested tables of the
/// columns left out are released, and fills after it address the new column
/// numbers. A keyword the table does not have is logged ("QEL_SelectColumns:
/// table %s has no column %s") and changes nothing.
QEL_API void QEL_SelectColumns(QEL_DESC *desc, const GS_TokenValues *columns, int count);
/// Sorts the filled rows of \p desc by the column whose keyword is
/// \p column, ascending or \p descending; stable, with the catalogue's
/// comparison for the column's sort type (by value for columns the catalogue
/// does not sort; missing texts first). The cells move; every later print
/// keeps this order instead of the catalogue's. An unknown column is logged
/// ("QEL_SortRows: table %s has no column %s") and changes nothing.
QEL_API void QEL_SortRows(QEL_DESC *desc, GS_TokenValues column, bool descending);

/// Prints the chain that \p head starts in the session's output type: the
/// document envelope goes to \p stream (switched to silent truncation), the
/// tables to the session's output stream, or to \p stream for the console
/// when \p includeDtd is set. \p includeDtd and \p includeXmlDeclaration
/// add the DTD and the XML declaration to XML API documents; \p request
/// (null or empty: none) is echoed in their REQUEST attribute.
QEL_API void QEL_Print_Data(QEL_DESC *head, services::user::Session *session,
                            utility::PutStream &stream, bool includeDtd,
                            bool includeXmlDeclaration, const char *request);
/// The DTD that may precede an XML API document's RESPONSE element.
QEL_API const char *getDTDString();

/// Compares row \p rowA of \p a with row \p rowB of \p b, two descriptors of
/// one table, by the catalogue's sort rule for the table: the comparison of
/// its sort column's sort type, a missing text first. Negative, 0 or
/// positive; 0 for a table without a sort column. Rows stably sorted by it
/// print as a whole print orders them (SORTOutput, when no sort-column text
/// is missing). Null descriptors, different tables or rows out of range are
/// logged ("QEL_CompareRows: ...") and compare 0.
QEL_API int QEL_CompareRows(const QEL_DESC *a, int rowA, const QEL_DESC *b, int rowB);

/// A paged print: one document printed from any number of descriptors, one
/// page at a time, so that a list of any length needs only one page of rows
/// in memory.
///
///   QEL_PRINT *print = QEL_PrintOpen(session, stream, false, false, nullptr);
///   while (more rows)
///     { fill a descriptor with the next rows; QEL_PrintPage(print, d); QEL_Free(d); }
///   QEL_PrintClose(print);
///
/// The document is the one QEL_Print_Data would print for the pages'
/// descriptors linked into one chain, except that a page whose first
/// descriptor has the table, object name, console layout and column count
/// of the previous page's last descriptor continues it: its rows print as
/// more rows of that descriptor (object ids, row indexes and separators go
/// on; no second console header). Rows print in the order given: a paged
/// print sorts no top-level rows, so a caller that makes rows out of order
/// sorts them (QEL_CompareRows; QEL_SortRows for one page). Rows given in
/// print order come out in the XML API, tag and web-script forms byte for
/// byte as one descriptor holding them all would print. Nested tables and
/// XML2 associations print as in a whole print.
///
/// Console: headers and rules are written once per table. A column is as
/// wide as the widest value (or heading) of the pages seen so far: the first
/// page sets the widths, a later, wider value widens the column from its
/// page on, and no column narrows; so a table that fits one page prints as
/// QEL_Print_Data prints it.
///
/// A print belongs to one thread, like its descriptors. It holds no
/// descriptor: after QEL_PrintPage returns, the caller frees the page or
/// fills it again for the next one (set numRows to the rows it holds now).
struct QEL_PRINT;

/// Opens a paged print in the session's output type; the streams and
/// flags are those of QEL_Print_Data, and the document's beginning is
/// written now. Null, with nothing written, when memory runs out
/// ("QEL_PrintOpen: out of memory" logged); null after the message of
/// QEL_Print_Data for an unrecognised output type; null for a null session.
QEL_API QEL_PRINT *QEL_PrintOpen(services::user::Session *session, utility::PutStream &stream,
                                 bool includeDtd, bool includeXmlDeclaration,
                                 const char *request);
/// Prints the chain \p head as the next page (null: nothing). False when
/// the print has stopped: memory ran out (logged by the renderer), or the
/// output stream is full or in error ("QEL_PrintPage: the output stream is
/// full or failed; the print stops" logged once). A stopped print writes
/// no more pages; the caller still closes it, and frees its descriptors.
QEL_API bool QEL_PrintPage(QEL_PRINT *print, QEL_DESC *head);
/// Ends the document (as far as a stopped print allows) and releases the
/// print. Null is ignored.
QEL_API void QEL_PrintClose(QEL_PRINT *print);

#endif
