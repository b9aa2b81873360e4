// Internal header of the library: not installed, not part of its interface.
#ifndef QEL_INTERNAL_H
#define QEL_INTERNAL_H

#include <qel/platform/streams.h>
#include <qel/cli_qel.h>
#include <qel/fieldnames/fieldnames.h>

#include <cstddef>

namespace qel_detail {

/// The XML declaration that opens XML API and tag documents.
inline constexpr char kXmlDeclaration[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

/// Text for a "%s" argument: never null.
inline const char *text(const char *s) { return s ? s : ""; }

/// The keyword text of a token for messages: "" when it has none.
inline const char *keywordText(unsigned token) {
  return text(strings::GS.toString(token));
}

/// The cell (row, column) of a descriptor.
inline QEL_CELL &cellAt(QEL_DESC *desc, int row, int column) {
  return desc->cells[static_cast<long>(row) * desc->maxColumns + column];
}

/// Whether cells of \p type hold pointers rather than numbers.
inline bool holdsPointer(ColumnDataType type) {
  switch (type) {
  case COLTYPE_STRING:
  case COLTYPE_STRING_N:
  case COLTYPE_HEX_STRING:
  case COLTYPE_U64:
  case COLTYPE_BLOCKS:
  case COLTYPE_BLOCKS2BYTES:
  case COLTYPE_QEL:
    return true;
  default:
    return false;
  }
}

/// Names of a catalogue keyword that the dictionary has no text for: a
/// label derived from the keyword and the keyword as tag-XML element name.
/// The generated table kDerivedNames is sorted by token.
struct DerivedName {
  GS_TokenValues token;
  FieldName record;    ///< default record: derived label, empty other texts
  const char *element; ///< the keyword text
};
extern const DerivedName kDerivedNames[];
extern const std::size_t kDerivedNameCount;

/// The derived names of \p token, or null when it has none.
const DerivedName *findDerivedName(unsigned token);

/// Whether QEL_Start has built the dictionary and registered the catalogue.
bool libraryStarted();

/// Text copies of a descriptor's cells live in chunks that the descriptor
/// owns, so a fill costs no allocation of its own and QEL_Free releases a
/// handful of chunks instead of one block per cell.
struct TextChunk {
  TextChunk *next;   ///< the chunk filled before this one
  std::size_t size;  ///< bytes after the header
  std::size_t used;  ///< bytes handed out
};

/// The block of a descriptor ends, past its cells, in two more words that
/// are not part of the reported size (allocSize): its newest text chunk (0
/// before the first copy), and flags.
inline QEL_CELL &chunksOf(QEL_DESC *desc) {
  return desc->cells[static_cast<long>(desc->maxRows) * desc->maxColumns];
}
inline QEL_CELL &flagsOf(QEL_DESC *desc) {
  return desc->cells[static_cast<long>(desc->maxRows) * desc->maxColumns + 1];
}
/// Flag: QEL_SortRows put the rows in order; printing keeps that order.
constexpr QEL_CELL kRowsInCallerOrder = 1;
constexpr int kTailWords = 2;

/// The type of a descriptor's column: its property's (a descriptor whose
/// columns were chosen with QEL_SelectColumns no longer follows the
/// registry's column order).
inline ColumnDataType columnType(const QEL_DESC *desc, int column) {
  const PropertyMetaData *p = desc->pColumns[column].pProperty;
  return p ? p->type : COLTYPE_UNKNOWN;
}

/// \p size bytes of storage for a copy in \p desc's chunks; null when memory
/// runs out.
char *textStorage(QEL_DESC *desc, std::size_t size);
/// Releases the chunks of \p desc.
void freeTextStorage(QEL_DESC *desc);

/// A put stream over inline storage of N bytes: a scratch stream that costs
/// no allocation. It behaves as a utility::BufferStream of N bytes.
template <int N> class ScratchStream : public utility::PutStream {
public:
  ScratchStream() {
    capacity = N;
    pData = m_storage;
    m_storage[0] = '\0';
  }
  ~ScratchStream() override { pData = nullptr; } // storage is not the heap's

private:
  char m_storage[N + 1];
};

} // namespace qel_detail

#endif
