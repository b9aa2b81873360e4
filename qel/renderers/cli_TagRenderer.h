// The tag renderer: descriptor chains as tag XML (deprecated).
#ifndef QEL_RENDERERS_CLI_TAGRENDERER_H
#define QEL_RENDERERS_CLI_TAGRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes each chain as one element named by the dictionary's tag name of
/// its first table, rows as elements of the object name, and one element
/// per column; nested tables inside the row that holds them.
class TagRenderer : public Renderer {
public:
  explicit TagRenderer(services::user::Session *session);
  ~TagRenderer() override;

  /// The XML declaration, the deprecation comment and the data element.
  void beginDocument(const DocumentOptions &options) override;
  void endDocument() override;

private:
  void beginChain(QEL_DESC *head, int indent) override;
  void endChain(QEL_DESC *head, int indent) override;
  void planTable(Plan &plan) override;
  bool sortsRows(const Plan &plan) const override;
  void orderFailed() override;
  void beginRow(Plan &plan, int row, int position, int indent) override;
  void cell(Plan &plan, const Column &col, Text value, const char *units, bool numericForm,
            int indent) override;
  void nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) override;
  void endRow(Plan &plan, int row, int indent) override;
  void tableTag(QEL_DESC *head, bool open, int indent);
};

#endif
