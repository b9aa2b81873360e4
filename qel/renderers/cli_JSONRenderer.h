// The JSON renderer: descriptor chains as the web interface's script of
// constructor calls.
#ifndef QEL_RENDERERS_CLI_JSONRENDERER_H
#define QEL_RENDERERS_CLI_JSONRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes one constructor call per row, in storage order, with one APIProp
/// per column (and a "-numeric" companion where the numeric form differs);
/// nested tables are calls inside the holding row's list.
class JSONRenderer : public Renderer {
public:
  explicit JSONRenderer(services::user::Session *session);
  ~JSONRenderer() override;

  /// The outer constructor call: "new APIData([" and "\n])\n".
  void beginDocument(const DocumentOptions &options) override;
  void endDocument() override;

private:
  void planTable(Plan &plan) override;
  bool beginTable(Plan &plan, int parentOid, int indent) override;
  bool sortsRows(const Plan &plan) const override;
  void orderFailed() override;
  void beginRow(Plan &plan, int row, int position, int indent) override;
  void cell(Plan &plan, const Column &col, Text value, const char *units, bool numericForm,
            int indent) override;
  void nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) override;
  void endRow(Plan &plan, int row, int indent) override;
  void endTable(Plan &plan, int indent) override;
  void putScript(Text value);

  struct Level {
    int oid;    ///< id the row took when it started
    bool first; ///< no property written yet in this row
  };
  Level m_levels[kMaxDepth + 1];
  bool m_comma = false; ///< paged: the last page's last table had rows
};

extern "C" {
/// Turns a keyword into a constructor name in place: the first letter and
/// every letter after "-" or "_" upper-cased, the separators dropped.
QEL_API char *toJson(char *text);
}

#endif
