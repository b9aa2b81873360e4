// The renderer base: the session settings every renderer captures, the text
// of one cell (FormatData), XML escaping, the numeric-companion rule, and the
// one walk over a descriptor chain that every output format shares.
//
// A renderer is made for one print call, prints one chain with PrintTable
// (which recurses into nested tables on the same object, so objectId keeps
// counting) and is destroyed. The document around the chain (declaration,
// RESPONSE element, wrapper) comes from beginDocument and endDocument.
//
// A paged print keeps one renderer for a whole document and gives it the
// chain in pages (PrintPage), then calls endPages. The pages print as one
// top-level chain: the chain hooks run once, and a page whose first
// descriptor has the table, object name, console layout and column count of
// the previous page's last descriptor continues that descriptor's rows: row
// numbers go on counting (rowsBefore), and the renderers write what a
// single descriptor holding all those rows would give. Top-level rows of a
// page go out in the order given, never sorted; nested tables sort as in a
// whole print. Renderers never throw: the streams they write
// are switched to silent truncation, so text that does not fit is cut.
//
// Nesting is limited to kMaxDepth levels: a nested table deeper than that is
// not printed, and "Renderer: nested tables deeper than 64 levels are not
// printed" is logged once per print. A renderer made without a session
// writes nothing and logs "Renderer: no session".
#ifndef QEL_RENDERERS_RENDERER_H
#define QEL_RENDERERS_RENDERER_H

#include <qel/platform/export.h>
#include <qel/platform/locale.h>
#include <qel/platform/streams.h>
#include <qel/platform/user.h>
#include <qel/cli_qel.h>

#include <cstddef>
#include <cstdint>
#include <string>

class Renderer {
public:
  /// Nested tables printed below a top-level table, at most.
  static constexpr int kMaxDepth = 64;

  /// Writes to the session's output stream, with the session's settings.
  explicit Renderer(services::user::Session *session);
  /// As above, writing to \p stream.
  Renderer(services::user::Session *session, utility::PutStream &stream);
  /// Writes to \p stream with fixed defaults: OUTPUT_API, units "auto",
  /// precision 2, base 10, 80 columns, LOCALE_EN.
  explicit Renderer(utility::PutStream &stream);
  virtual ~Renderer();
  Renderer(const Renderer &) = delete;
  Renderer &operator=(const Renderer &) = delete;

  /// What a document holds besides its tables.
  struct DocumentOptions {
    bool includeDtd = false;
    bool includeXmlDeclaration = false;
    const char *request = nullptr;
  };
  /// Writes what comes before the first table of a document, and after the last.
  virtual void beginDocument(const DocumentOptions &options);
  virtual void endDocument();
  /// Runs beginDocument (\p options given) or endDocument (null) with their
  /// text going to \p stream rather than the output stream: the print entry
  /// writes the envelope to the stream its caller names.
  void documentTo(utility::PutStream &stream, const DocumentOptions *options);

  /// Prints \p head (null: nothing) as the next page of a paged document;
  /// see the file comment. False once the print has stopped (logged).
  bool PrintPage(QEL_DESC *head);
  /// Closes what the last page left open (the tag form's table element,
  /// the console's closing rule); call once, after the last page and before
  /// endDocument.
  void endPages();

  /// Prints the chain that starts at \p desc (null: nothing). \p parentOid
  /// is the object id of the enclosing object, \p indent the indentation of
  /// this level.
  virtual void PrintTable(QEL_DESC *desc, int parentOid, int indent);

  /// Writes the text of cell (\p row, \p column) to \p value, after
  /// rewinding it; in numeric form, the value's number where it differs. A
  /// storage size also writes its units attribute to \p numeric. Bad
  /// arguments are logged and leave \p value empty.
  void FormatData(QEL_DESC *desc, int column, int row, utility::PutStream &value,
                  utility::PutStream &numeric, bool numericForm);
  /// Writes \p text with the five XML special characters escaped. Bytes that
  /// XML does not allow are replaced so the document stays well-formed: C0
  /// control characters other than tab, line feed and carriage return are
  /// dropped, and each byte that is not part of a valid UTF-8 sequence (or
  /// that encodes a surrogate, U+FFFE or U+FFFF) becomes U+FFFD.
  static void convertBuffer(utility::PutStream &out, const char *text);
  /// The same escaping into a string, for texts a plan makes once.
  static std::string xmlEscaped(const char *text);
  /// True for the column types whose numeric form differs (ENUM, ENUMTOKEN,
  /// DATETIME, TIME, BLOCKS, BLOCKS2BYTES): they get a "-numeric" companion.
  bool isNumericColumn(QEL_DESC *desc, int column);
  /// True for the column types whose display text is a plain number
  /// (integers and doubles).
  static bool numberText(ColumnDataType type);

  utility::PutStream *outputStream;                           ///< not owned
  services::user::Preferences::StorageUnit storageSizeUnits;  ///< unit token
  std::int32_t storageSizeBase;                               ///< 2 or 10
  std::uint8_t storageSizePrecision;                          ///< decimals
  services::user::Preferences::OutputType outputFormat;       ///< output type
  LocaleCode locale;                                          ///< display names
  std::int32_t screenWidth;                                   ///< console width
  std::int32_t objectId;                                      ///< last id given

protected:
  /// A text that is not NUL-terminated: a run of bytes.
  struct Text {
    const char *data;
    int size;
  };

  /// A text kept in a plan's bytes (offsets stay valid when they grow).
  struct Span {
    int offset;
    int size;
  };

  /// Decoder texts remembered per column: values that repeat down a column
  /// are decoded once.
  static constexpr int kDecoded = 4;
  static constexpr int kDecodedBytes = 64;

  /// Everything about one column that does not change from row to row,
  /// resolved once per print of a descriptor.
  struct Column {
    int index;                          ///< column number in the descriptor
    ColumnDataType type;                ///< from the registry
    const PropertyMetaData *property;   ///< may be null
    _QEL_COLUMN_DESC *desc;             ///< the descriptor's column
    bool companion;                     ///< has a "-numeric" companion
    int limit;                          ///< bytes of a value, at most
    int width;                          ///< console: printed width
    Span fixed[4];                      ///< the renderer's constant texts
    std::int64_t decodedValue[kDecoded]; ///< cached decoder input, or -1
    int decodedSize[kDecoded];          ///< its text's length
    int decodedOffset;                  ///< kDecoded slots in the bytes
  };

  /// The plan of one descriptor: its columns and the constant texts the
  /// renderer made for them (in `bytes`).
  struct Plan {
    QEL_DESC *desc = nullptr;
    Column *columns = nullptr;            ///< count entries
    int count = 0;                        ///< columns in use
    int capacity = 0;                     ///< columns allocated
    char *bytes = nullptr;                ///< constant texts, decoder cache
    int used = 0;                         ///< bytes in use
    int size = 0;                         ///< bytes allocated
    _QEL_COLUMN_DESC *snapshot = nullptr; ///< the columns it was made for
    GS_TokenValues tableId{};             ///< the table it was made for
    GS_TokenValues nameId{};              ///< and its object name
    std::uint8_t consoleFormat = 0;       ///< and its console layout
    Span table[4];                        ///< the renderer's per-table texts

    Text text(Span s) const { return {bytes + s.offset, s.size}; }
  };

  // --- The walk --------------------------------------------------------

  /// Prints the chain \p head: plans each descriptor, takes its rows in
  /// print order and hands them, column by column, to the hooks below.
  /// Returns false when the print had to stop (logged).
  bool walk(QEL_DESC *head, int parentOid, int indent);

  /// A paged print is under way (PrintPage was called).
  bool paged() const { return m_paged; }
  /// The top-level descriptor being printed continues the previous page's.
  bool continues() const { return m_depth == 0 && m_continues; }
  /// Rows that earlier pages printed of the table being continued (0 below
  /// the top level and for a table that does not continue one).
  int rowsBefore() const { return m_depth == 0 ? m_rowsBefore : 0; }
  /// Keeps the output from here (the mark) instead of handing it on, until
  /// release: a renderer that must see the next page before it can finish
  /// a row holds that row.
  void hold();
  /// Hands on what was kept, with \p insert (null: nothing) at the mark.
  void release(const char *insert);
  bool holding() const { return m_holding; }

  /// Called before the chain, and after it.
  virtual void beginChain(QEL_DESC *head, int indent);
  virtual void endChain(QEL_DESC *head, int indent);
  /// Makes the renderer's constant texts of a fresh plan (addText).
  virtual void planTable(Plan &plan) = 0;
  /// Before the rows of a descriptor; false skips the descriptor.
  virtual bool beginTable(Plan &plan, int parentOid, int indent);
  /// Whether the rows go out sorted (SORTOutput) rather than as stored.
  virtual bool sortsRows(const Plan &plan) const = 0;
  /// Logs that the row order could not be allocated.
  virtual void orderFailed() = 0;
  /// Row \p row (the \p position-th printed); in a continued table both
  /// count the rows of earlier pages too.
  virtual void beginRow(Plan &plan, int row, int position, int indent) = 0;
  /// Whether column \p col is visited at all.
  virtual bool visits(const Column &col) const;
  /// One value (\p numericForm: its companion). \p units is the storage
  /// size's units text, or empty.
  virtual void cell(Plan &plan, const Column &col, Text value, const char *units,
                    bool numericForm, int indent) = 0;
  /// A cell of a nested-table column (\p nested may be null).
  virtual void nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) = 0;
  virtual void endRow(Plan &plan, int row, int indent) = 0;
  /// After the rows of a descriptor.
  virtual void endTable(Plan &plan, int indent);

  /// Stores \p size bytes of \p text in the plan; false when out of memory.
  bool addText(Plan &plan, Span &slot, const char *text, int size);
  bool addText(Plan &plan, Span &slot, const char *text);
  /// Makes the plan's columns match the descriptor's again (the console's
  /// header may widen a column).
  void replan(Plan &plan);

  /// The text of a cell, as FormatData writes it to a value stream of
  /// col.limit bytes; \p units receives the units text of a storage size.
  Text cellText(Plan &plan, Column &col, QEL_CELL cell, bool numericForm, char *units);

  // --- Output ----------------------------------------------------------
  // Text goes to an inline buffer that is handed to the output stream when
  // it fills and when the outermost call returns.

  void put(const char *data, int size) {
    if (size > kBufferSize - m_used) {
      putSlow(data, size);
      return;
    }
    __builtin_memcpy(m_buffer + m_used, data, static_cast<std::size_t>(size));
    m_used += size;
  }
  void put(Text text) { put(text.data, text.size); }
  /// Inline so that a literal's length is known at compile time.
  void put(const char *text) {
    if (text)
      put(text, static_cast<int>(__builtin_strlen(text)));
  }
  void putChar(char c) {
    if (m_used == kBufferSize)
      flush();
    m_buffer[m_used++] = c;
  }
  void putInt(long long value);
  void pad(int count) {
    if (count > 0 && count <= kBufferSize - m_used) {
      __builtin_memset(m_buffer + m_used, ' ', static_cast<std::size_t>(count));
      m_used += count;
      return;
    }
    putRun(count, ' ');
  }
  void putRun(int count, char c);
  /// \p value with the XML escaping of convertBuffer.
  void putXml(Text value);
  /// \p value as the inside of a JSON string: quote, backslash and C0
  /// control characters escaped, invalid UTF-8 replaced as putXml does.
  void putJson(Text value);
  /// \p value as a CSV field: in double quotes (doubled inside) when it
  /// holds \p delimiter, a quote or a line break; invalid UTF-8 replaced.
  void putCsv(Text value, char delimiter);
  void flush();

  /// Counts calls into the renderer so that the outermost one flushes.
  class Call {
  public:
    explicit Call(Renderer &r) : m_r(r) { ++m_r.m_calls; }
    ~Call() {
      if (--m_r.m_calls == 0)
        m_r.flush();
    }

  private:
    Renderer &m_r;
  };

  int depth() const { return m_depth; }
  bool failed() const { return m_failed; }
  /// Logs an allocation failure of \p what and stops the print.
  void outOfMemory(const char *what);

private:
  static constexpr int kBufferSize = 1 << 15;

  Renderer(services::user::Session *session, utility::PutStream *stream, bool);

  void putSlow(const char *data, int size);
  void deliver(const char *data, int size);
  Plan *planFor(QEL_DESC *desc);
  bool fillPlan(Plan &plan, QEL_DESC *desc);
  Text decode(Plan &plan, Column &col, std::uint32_t value);
  Text storageSize(const char *text, char *units);

  Plan m_plans[kMaxDepth + 1];   ///< one per nesting level
  int m_depth = -1;              ///< level being printed
  int m_calls = 0;               ///< open calls into the renderer
  bool m_failed = false;         ///< the print stopped
  bool m_tooDeep = false;        ///< the depth limit was logged
  const char *m_notAvailable;    ///< the localized "N/A"
  int m_used = 0;                ///< bytes in m_buffer
  char m_scratch[7200 + 64];     ///< formatted cell texts
  // Paged print.
  bool m_paged = false;          ///< PrintPage was called
  bool m_chainOpen = false;      ///< beginChain ran for the pages
  bool m_continues = false;      ///< the top-level descriptor continues
  bool m_lastValid = false;      ///< m_last describes a printed table
  int m_rowsBefore = 0;          ///< rows of earlier pages, continued table
  int m_lastRows = 0;            ///< rows so far of the last table
  alignas(QEL_DESC) unsigned char m_head[sizeof(QEL_DESC)]; ///< first page's head (header only)
  alignas(QEL_DESC) unsigned char m_last[sizeof(QEL_DESC)]; ///< last top-level table (header only)
  bool m_holding = false;        ///< output is being kept
  char *m_held = nullptr;        ///< kept output
  int m_heldSize = 0;            ///< bytes in m_held
  int m_heldCapacity = 0;        ///< bytes allocated
  char m_buffer[kBufferSize];    ///< output not yet handed on
};

#endif
