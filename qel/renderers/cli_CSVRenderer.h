// The CSV and TSV renderer: the rows of one table of a descriptor chain as
// delimiter-separated values.
#ifndef QEL_RENDERERS_CLI_CSVRENDERER_H
#define QEL_RENDERERS_CLI_CSVRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes a header row and one line per row of one basetype: the session's
/// selected table (Preferences::getSelectedTable) wherever it is nested, or
/// the first table of the print. Columns are those of the XML API document,
/// "-numeric" companions included; nested-table columns are left out.
/// OUTPUT_CSV separates fields with commas and ends lines with CR LF;
/// OUTPUT_TSV separates them with tabs and ends lines with LF.
class CSVRenderer : public Renderer {
public:
  CSVRenderer(services::user::Session *session, utility::PutStream &stream);
  ~CSVRenderer() override;

private:
  void planTable(Plan &plan) override;
  void putHeader(const Plan &plan);
  bool beginTable(Plan &plan, int parentOid, int indent) override;
  bool sortsRows(const Plan &plan) const override;
  void orderFailed() override;
  void beginRow(Plan &plan, int row, int position, int indent) override;
  void cell(Plan &plan, const Column &col, Text value, const char *units, bool numericForm,
            int indent) override;
  void nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) override;
  void endRow(Plan &plan, int row, int indent) override;

  bool m_match[kMaxDepth + 1]; ///< the level's table is the one written
  bool m_first = true;         ///< no field written yet in this line
  bool m_header = false;       ///< the header row is written
  bool m_labels;               ///< header of labels rather than keywords
  char m_delimiter;            ///< ',' or '\t'
  const char *m_newline;       ///< "\r\n" or "\n"
  std::uint32_t m_selected;    ///< basetype written; tGSnone until known
};

#endif
