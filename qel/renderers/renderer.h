// The renderer base: the session settings every renderer captures, the text
// of one cell (FormatData), XML escaping and the numeric-companion rule.
//
// A renderer is made for one print call, prints one chain with PrintTable
// (which recurses into nested tables on the same object, so objectId keeps
// counting) and is destroyed. Renderers never throw: the streams they write
// are switched to silent truncation, so text that does not fit is cut.
#ifndef QEL_RENDERERS_RENDERER_H
#define QEL_RENDERERS_RENDERER_H

#include <platform/export.h>
#include <platform/locale.h>
#include <platform/streams.h>
#include <platform/user.h>
#include <qel/cli_qel.h>

#include <cstddef>
#include <cstdint>

class QEL_API Renderer {
public:
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

  /// Prints the chain that starts at \p desc. \p parentOid is the object id
  /// of the enclosing object, \p indent the indentation of this level.
  virtual void PrintTable(QEL_DESC *desc, int parentOid, int indent) = 0;

  /// Writes the text of cell (\p row, \p column) to \p value, after
  /// rewinding it; in numeric form, the value's number where it differs. A
  /// storage size also writes its units attribute to \p numeric. Bad
  /// arguments are logged and leave \p value empty.
  void FormatData(QEL_DESC *desc, int column, int row, utility::PutStream &value,
                  utility::PutStream &numeric, bool numericForm);
  /// Writes \p text with the five XML special characters escaped.
  static void convertBuffer(utility::PutStream &out, const char *text);
  /// True for the column types whose numeric form differs (ENUM, ENUMTOKEN,
  /// DATETIME, TIME, BLOCKS, BLOCKS2BYTES): they get a "-numeric" companion.
  bool isNumericColumn(QEL_DESC *desc, int column);

  utility::PutStream *outputStream;                           ///< not owned
  services::user::Preferences::StorageUnit storageSizeUnits;  ///< unit token
  std::int32_t storageSizeBase;                               ///< 2 or 10
  std::uint8_t storageSizePrecision;                          ///< decimals
  services::user::Preferences::OutputType outputFormat;       ///< output type
  LocaleCode locale;                                          ///< display names
  std::int32_t screenWidth;                                   ///< console width
  std::int32_t objectId;                                      ///< last id given

protected:
  /// A scratch stream for cell texts: allocated once per renderer, reused
  /// for every cell. use(n) empties it and makes it hold at most n bytes,
  /// with silent truncation, exactly as a fresh stream of n bytes would.
  class Scratch : public utility::BufferStream {
  public:
    explicit Scratch(int size) : BufferStream(size), m_allocated(Capacity()) {}
    Scratch &use(int size);

  private:
    int m_allocated;
  };

  /// The value scratch, holding at most \p size (up to 7200) bytes, and the
  /// numeric scratch; both empty.
  Scratch &valueScratch(int size) { return m_value.use(size); }
  Scratch &numericScratch() { return m_numeric.use(1024); }

private:
  void writeStorageSize(const char *text, utility::PutStream &value,
                        utility::PutStream &numeric);
  void writeText(const char *text, utility::PutStream &value);

  Scratch m_value{7200};
  Scratch m_numeric{1024};
  char *m_escape = nullptr;        ///< JSON escape scratch
  std::size_t m_escapeSize = 0;    ///< bytes in m_escape
};

#endif
