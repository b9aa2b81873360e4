// Tag XML (the deprecated XML output). Elements are named by the
// dictionary's tag names; every table is one element around its rows:
//
//   <volumes>
//     <volume index="0">
//       <volume-name>vol1</volume-name>
//       <Size units="GB">1.05GB</Size>
//     </volume>
//   </volumes>
//
// A row element appears only when the descriptor has an object name, and
// carries index="n" only when the descriptor has more than one row. Nothing
// is escaped: values and attributes are written as they are.
#include <qel/renderers/cli_TagRenderer.h>

#include <qel/internal.h>

#include <platform/debug.h>
#include <platform/helpers.h>

TagRenderer::TagRenderer(services::user::Session *session) : Renderer(session) {}

TagRenderer::~TagRenderer() = default;

void TagRenderer::PrintTable(QEL_DESC *desc, int, int indent) {
  if (!desc)
    return;
  outputStream->setSilentTruncation(true);
  PrintTableTag(static_cast<int>(desc->tableId), true, indent);
  for (QEL_DESC *d = desc; d; d = d->pNext) {
    char name[256] = "";
    if (d->nameId != tGSnone)
      strcpyAssert(name, getXMLName(d->nameId), sizeof name);
    strlwr(name);
    for (int r = 0; r < d->numRows; ++r) {
      ++objectId;
      if (d->nameId != tGSnone) {
        outputStream->Indent(indent + 2);
        if (d->numRows > 1)
          outputStream->PutF("<%s index=\"%d\">\n", name, r);
        else
          outputStream->PutF("<%s>\n", name);
      }
      for (int c = 0; c < d->numColumns; ++c) {
        if (getColumnType(d->tableId, c) == COLTYPE_QEL) {
          if (QEL_CELL cell = qel_detail::cellAt(d, r, c))
            PrintTable(reinterpret_cast<QEL_DESC *>(cell), 0, indent + 4);
          continue;
        }
        Scratch &value = valueScratch(7000);
        Scratch &numeric = numericScratch();
        FormatData(d, c, r, value, numeric, false);
        outputStream->Indent(indent + 4);
        Print(d, r, c, value.pTail(), numeric.pTail());
      }
      if (d->nameId != tGSnone) {
        outputStream->Indent(indent + 2);
        outputStream->PutF("</%s>\n", name);
      }
    }
  }
  PrintTableTag(static_cast<int>(desc->tableId), false, indent);
}

void TagRenderer::PrintTableTag(int tableId, bool open, int indent) {
  outputStream->Indent(indent + 2);
  const char *element = getXMLName(static_cast<unsigned>(tableId));
  if (!element) {
    logErrorPrint("Table %s does not have an XML name",
                  qel_detail::keywordText(static_cast<unsigned>(tableId)));
    outputStream->PutF("<%sundefined>\n", open ? "" : "/");
    return;
  }
  outputStream->PutF("<%s%s>\n", open ? "" : "/", element);
}

void TagRenderer::Print(QEL_DESC *desc, int, int column, char *value, char *numeric) {
  const _QEL_COLUMN_DESC &col = desc->pColumns[column];
  const char *element = qel_detail::text(getXMLName(col.displayId));
  if (col.qualifierNameId == tGSnone)
    outputStream->PutF("<%s%s%s>%s</%s>\n", element, *numeric ? " " : "", numeric, value,
                       element);
  else
    outputStream->PutF("<%s %s=\"%s\">%s</%s>\n", element,
                       qel_detail::keywordText(col.qualifierNameId),
                       qel_detail::keywordText(col.qualifierValueId), value, element);
}
