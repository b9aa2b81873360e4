// The console renderer: descriptor chains as text tables for a terminal.
#ifndef QEL_RENDERERS_CLI_CONSOLERENDERER_H
#define QEL_RENDERERS_CLI_CONSOLERENDERER_H

#include <qel/renderers/renderer.h>

/// Prints each descriptor in the layout of its consoleFormat, with English
/// labels, wrapped to the screen width. Each descriptor is printed once: the
/// renderer sets `printed` on it and skips descriptors already printed.
class QEL_API ConsoleRenderer : public Renderer {
public:
  explicit ConsoleRenderer(services::user::Session *session);
  ConsoleRenderer(services::user::Session *session, utility::PutStream &stream);
  ~ConsoleRenderer() override;

  void PrintTable(QEL_DESC *desc, int parentOid, int indent) override;
  /// Writes the header line and its rule; returns the rule's length.
  int PrintHeader(QEL_DESC *desc, int indent);
  /// Writes one column heading padded to the column width into \p out;
  /// returns the width it takes (may raise a width-tracking column).
  int FormatColumnHeader(_QEL_COLUMN_DESC *column, int tableId,
                         utility::PutStream &out);
  /// Writes one row of a column table.
  void PrintRow(QEL_DESC *desc, int row, bool embedded, int indent);
  /// The header of the rows-without-header layout: prints nothing.
  int PrintEmbeddedHeader(QEL_DESC *desc, bool nested, int indent);

private:
  bool printColumnTable(QEL_DESC *d, int indent);
  void printPairs(QEL_DESC *d, const char *title, int indent);
  void printPacked(QEL_DESC *d, int indent);
  void printLabeled(QEL_DESC *d, int indent);
  void printEmbeddedRows(QEL_DESC *d, int indent);
  void printStatus(QEL_DESC *d, int indent);
  void printValueLines(QEL_DESC *d, int indent, bool status);
  bool printNestedCell(QEL_DESC *d, int row, int column, int indent);
  void printNested(QEL_DESC *d, int row, int column, int indent);
};

#endif
