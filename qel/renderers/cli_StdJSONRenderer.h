// The standard JSON renderer: descriptor chains as RFC 8259 JSON, one
// document per print (json-std) or one object per row and line (ndjson).
#ifndef QEL_RENDERERS_CLI_STDJSONRENDERER_H
#define QEL_RENDERERS_CLI_STDJSONRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes each row as an object keyed by property keywords, in the XML API's
/// row order, with a "-numeric" member where the numeric form differs;
/// nested tables are arrays of row objects under their column's keyword.
/// json-std (OUTPUT_JSON_STD) groups the rows of each top-level table in an
/// array under its basetype; ndjson (OUTPUT_NDJSON) writes every top-level
/// row as a line {"<basetype>":{...}}.
class StdJSONRenderer : public Renderer {
public:
  StdJSONRenderer(services::user::Session *session, utility::PutStream &stream);
  ~StdJSONRenderer() override;

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
    int rows;            ///< rows written in the open array
    bool first;          ///< no member written yet in this row
    std::uint32_t array; ///< keyword of the open nested-table array, or 0
  };
  void closeArray(Level &level);
  Level m_levels[kMaxDepth + 1];
  bool m_ndjson;
  GS_TokenValues m_open{}; ///< json-std: basetype of the open top-level array
  bool m_opened = false;   ///< json-std: a top-level array is open
};

#endif
