// The tag renderer: descriptor chains as the deprecated tag XML.
#ifndef QEL_RENDERERS_CLI_TAGRENDERER_H
#define QEL_RENDERERS_CLI_TAGRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes every property as an element named by the dictionary's XML name,
/// every row as an element named after the object, the whole chain inside
/// one element named after the first descriptor's table. Storage order; no
/// escaping.
class QEL_API TagRenderer : public Renderer {
public:
  explicit TagRenderer(services::user::Session *session);
  ~TagRenderer() override;

  void PrintTable(QEL_DESC *desc, int parentOid, int indent) override;
  /// Writes the start (\p open) or end tag of a table's element.
  void PrintTableTag(int tableId, bool open, int indent);
  /// Writes one property element from a cell's text and units attribute.
  void Print(QEL_DESC *desc, int row, int column, char *value, char *numeric);
};

#endif
