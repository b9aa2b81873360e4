// The XML API renderer: descriptor chains as the body of an XML API
// document.
#ifndef QEL_RENDERERS_CLI_XMLRENDERER_H
#define QEL_RENDERERS_CLI_XMLRENDERER_H

#include <qel/renderers/renderer.h>

/// A nested table waiting to be written after its holding object (XML2).
struct Associations {
  QEL_DESC *nested; ///< the nested chain
  int parentOid;    ///< object id of the holding object
};

/// Writes one OBJECT element per row (in sorted order) and one PROPERTY
/// element per column. Brief output (OUTPUT_API_BRIEF, OUTPUT_XML2_BRIEF)
/// keeps only the type among the metadata attributes; the XML2 form
/// (OUTPUT_XML2, OUTPUT_XML2_BRIEF) pairs every object with its holder in a
/// COMP element and writes nested tables after the holding object.
class XMLRenderer : public Renderer {
public:
  /// Nested tables one object may hold in the XML2 form.
  static constexpr int kMaxAssociations = 50;

  explicit XMLRenderer(services::user::Session *session);
  ~XMLRenderer() override;

  /// The XML declaration and the DTD when asked for, and the RESPONSE
  /// element around the tables.
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

  struct Level {
    int oid;                                   ///< the object being written
    int parentOid;                             ///< its holder's id
    int pending;                               ///< entries in assocs
    Associations assocs[kMaxAssociations];     ///< XML2: after the object
  };
  Level m_levels[kMaxDepth + 1];
  bool m_brief;
  bool m_xml2;
};

#endif
