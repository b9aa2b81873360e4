// The HTML renderer: descriptor chains as a self-contained web page.
#ifndef QEL_RENDERERS_CLI_HTMLRENDERER_H
#define QEL_RENDERERS_CLI_HTMLRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes one table element per descriptor, with labels in the session's
/// locale, in the XML API's row order; nested tables sit collapsed in their
/// holder's cell. beginDocument and endDocument write the page around them
/// (inline style and script, no external resource).
class HTMLRenderer : public Renderer {
public:
  HTMLRenderer(services::user::Session *session, utility::PutStream &stream);
  ~HTMLRenderer() override;

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
  void endChain(QEL_DESC *head, int indent) override;

  static constexpr char kTableEnd[] = "</tbody></table>\n";
  /// Paged: the top-level table is open; the next page may continue it.
  bool m_open = false;
};

#endif
