// The web interface's script. One constructor call per row:
//
//   new APIVolumes([
//       new APIProp({name:"volume-name",value:"vol1"}),
//       new APIProp({name:"size",value:"1.05GB"}),
//       new APIProp({name:"size-numeric",value:"2048"})],
//       {basetype:"volumes",name:"volume",oid:"1"})
//
// Keys are unquoted: it is a script, not strict JSON. Names and values are
// written as they are; the only escaping is of double quotes, backslashes
// and line breaks in STRING and STRING_N values, which FormatData does for
// the JSON output types.
#include <qel/renderers/cli_JSONRenderer.h>

#include <qel/internal.h>

#include <platform/helpers.h>

#include <cctype>

char *toJson(char *text) {
  if (!text)
    return nullptr;
  int i = 0, j = 0;
  while (text[i]) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (i == 0) {
      text[j] = static_cast<char>(std::islower(c) ? std::toupper(c) : c);
    } else if (c == '_' || c == '-') {
      ++i; // drop the separator; the next byte is upper-cased
      if (!text[i])
        break;
      text[j] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
    } else {
      text[j] = text[i];
    }
    ++i;
    ++j;
  }
  text[j] = '\0';
  return text;
}

JSONRenderer::JSONRenderer(services::user::Session *session) : Renderer(session) {}

JSONRenderer::~JSONRenderer() = default;

void JSONRenderer::PrintTable(QEL_DESC *desc, int, int indent) {
  if (!desc)
    return;
  outputStream->setSilentTruncation(true);
  for (QEL_DESC *d = desc; d; d = d->pNext) {
    char name[256] = "";
    if (d->nameId != tGSnone)
      strcpyAssert(name, getAPIName(d->nameId), sizeof name);
    for (int r = 0; r < d->numRows; ++r) {
      const int rowOid = ++objectId;
      char type[80];
      strcpyAssert(type, getAPIName(d->tableId), sizeof type);
      outputStream->PutS(r == 0 ? "\n" : ",\n");
      outputStream->Indent(indent + 2);
      outputStream->PutF("new API%s([", toJson(type));
      bool first = true;
      for (int c = 0; c < d->numColumns; ++c) {
        if (getColumnType(d->tableId, c) == COLTYPE_QEL) {
          auto *nested = reinterpret_cast<QEL_DESC *>(qel_detail::cellAt(d, r, c));
          if (nested && nested->numRows >= 1) {
            if (!first)
              outputStream->PutC(',');
            PrintTable(nested, objectId, indent + 2);
            first = false;
          }
        } else {
          outputStream->PutS(first ? "\n" : ",\n");
          Scratch &value = valueScratch(7200);
          Scratch &numeric = numericScratch();
          FormatData(d, c, r, value, numeric, false);
          outputStream->Indent(indent + 4);
          Print(d, r, c, value, numeric, false);
          first = false;
          if (isNumericColumn(d, c)) {
            outputStream->PutS(",\n");
            value.use(7200);
            numeric.use(1024);
            FormatData(d, c, r, value, numeric, true);
            outputStream->Indent(indent + 4);
            Print(d, r, c, value, numeric, true);
          }
        }
        if (c == d->numColumns - 1)
          outputStream->PutC(']');
      }
      m_rowOid = rowOid;
      PrintBaseType(d, r, name, indent + 4);
    }
    QEL_DESC *next = d->pNext;
    if (next && d->numRows >= 1 && (next->numRows >= 1 || next->jsonSeparator))
      outputStream->PutC(',');
  }
}

void JSONRenderer::Print(QEL_DESC *desc, int, int column, utility::BufferStream &value,
                         utility::BufferStream &, bool numericForm) {
  const char *name = qel_detail::keywordText(desc->pColumns[column].displayId);
  outputStream->PutF(numericForm ? "new APIProp({name:\"%s-numeric\",value:\"%s\"})"
                                 : "new APIProp({name:\"%s\",value:\"%s\"})",
                     name, value.pTail());
}

void JSONRenderer::PrintBaseType(QEL_DESC *desc, int, char *name, int indent) {
  outputStream->PutS(",\n");
  outputStream->Indent(indent);
  outputStream->PutF("{basetype:\"%s\",name:\"%s\",oid:\"%d\"})",
                     qel_detail::text(getAPIName(desc->tableId)), strlwr(name), m_rowOid);
}
