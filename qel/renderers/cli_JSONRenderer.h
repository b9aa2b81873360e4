// The JSON renderer: descriptor chains as the web interface's script of
// constructor calls.
#ifndef QEL_RENDERERS_CLI_JSONRENDERER_H
#define QEL_RENDERERS_CLI_JSONRENDERER_H

#include <qel/renderers/renderer.h>

/// Writes every row as `new API<Type>([properties], {identity})`, each
/// property as `new APIProp({name:"...",value:"..."})`, nested tables inside
/// the property list. Storage order; ids as the rows start.
class QEL_API JSONRenderer : public Renderer {
public:
  explicit JSONRenderer(services::user::Session *session);
  ~JSONRenderer() override;

  void PrintTable(QEL_DESC *desc, int parentOid, int indent) override;
  /// Writes one APIProp call from the text that FormatData left in \p value.
  void Print(QEL_DESC *desc, int row, int column, utility::BufferStream &value,
             utility::BufferStream &numeric, bool numericForm);
  /// Writes the identity object of a row: basetype, name and the id the row
  /// took when it started.
  void PrintBaseType(QEL_DESC *desc, int row, char *name, int indent);

private:
  int m_rowOid = 0; ///< id of the row whose identity is written next
};

extern "C" {
/// Turns a keyword into a constructor name in place: the first letter and
/// each letter after a "-" or "_" upper-cased, the separators dropped
/// (vdisk-statistics -> VdiskStatistics). Null gives null.
QEL_API char *toJson(char *text);
}

#endif
