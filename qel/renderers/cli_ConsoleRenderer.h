// The console renderer: descriptor chains as text tables for a terminal.
#ifndef QEL_RENDERERS_CLI_CONSOLERENDERER_H
#define QEL_RENDERERS_CLI_CONSOLERENDERER_H

#include <qel/renderers/renderer.h>

/// Prints each descriptor in the layout of its consoleFormat, with English
/// labels, wrapped to the screen width. Each descriptor is printed once: the
/// renderer sets `printed` on it and skips descriptors already printed.
class ConsoleRenderer : public Renderer {
public:
  explicit ConsoleRenderer(services::user::Session *session);
  ConsoleRenderer(services::user::Session *session, utility::PutStream &stream);
  ~ConsoleRenderer() override;

  void PrintTable(QEL_DESC *desc, int parentOid, int indent) override;
  /// One newline after the tables.
  void endDocument() override;

private:
  void planTable(Plan &plan) override;
  bool beginTable(Plan &plan, int parentOid, int indent) override;
  bool sortsRows(const Plan &plan) const override;
  void orderFailed() override;
  bool visits(const Column &col) const override;
  void beginRow(Plan &plan, int row, int position, int indent) override;
  void cell(Plan &plan, const Column &col, Text value, const char *units, bool numericForm,
            int indent) override;
  void nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) override;
  void endRow(Plan &plan, int row, int indent) override;
  void endTable(Plan &plan, int indent) override;
  void endChain(QEL_DESC *head, int indent) override;
  int printHeader(Plan &plan, int indent);
  void closeTable(bool more);
  bool keepWidths(Plan &plan, bool fresh);

  struct Level {
    int layout; ///< the descriptor's consoleFormat, 0 for any unknown value
    int pos;    ///< column-table layouts: position on the line
    int rule;   ///< column table: the header rule's length
    bool open;  ///< labeled: the bracket is open
  };
  Level m_levels[kMaxDepth + 1];
  // Paged print: the top-level table's widths, and its closing rule, which
  // waits until the next page shows whether the table goes on.
  int *m_widths = nullptr; ///< column widths so far, one per column
  int m_widthCount = 0;    ///< entries allocated
  bool m_closing = false;  ///< the closing rule is owed
};

#endif
