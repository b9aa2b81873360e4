// The XML API renderer: descriptor chains as the body of an XML API
// document.
#ifndef QEL_RENDERERS_CLI_XMLRENDERER_H
#define QEL_RENDERERS_CLI_XMLRENDERER_H

#include <qel/renderers/renderer.h>

/// A nested table waiting to be written after its holding object (XML2).
struct Associations {
  int cellIndex; ///< index into the holder's cells of the nested descriptor
  int parentOid; ///< object id of the holding object
};

/// Writes one OBJECT element per row (in sorted order) and one PROPERTY
/// element per column. Brief output (OUTPUT_API_BRIEF, OUTPUT_XML2_BRIEF)
/// keeps only the type among the metadata attributes; the XML2 form
/// (OUTPUT_XML2, OUTPUT_XML2_BRIEF) pairs every object with its holder in a
/// COMP element and writes nested tables after the holding object.
class QEL_API XMLRenderer : public Renderer {
public:
  /// Nested tables one object may hold in the XML2 form.
  static constexpr int kMaxAssociations = 50;

  explicit XMLRenderer(services::user::Session *session);
  ~XMLRenderer() override;

  void PrintTable(QEL_DESC *desc, int parentOid, int indent) override;
  /// Writes the PROPERTY element of cell (row, column) from the texts that
  /// FormatData left in \p value and \p numeric.
  void Print(QEL_DESC *desc, int row, int column, utility::BufferStream &value,
             utility::BufferStream &numeric, bool numericForm);
  /// Writes the nested tables of one object.
  void PrintAssocs(QEL_CELL *cells, Associations *list, int count, int indent);
  bool isBriefOutput() const;
  bool isXML2Output() const;
};

#endif
