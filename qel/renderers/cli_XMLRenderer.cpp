// XML API document bodies. One OBJECT per row, one PROPERTY per column:
//
//   <COMP G="0" P="1"/>  <OBJECT basetype="volumes" name="volume" oid="1" format="rows">
//       <PROPERTY name="size" units="MB" type="string" size="10" draw="true"
//        sort="size" display-name="Size">1.05MB</PROPERTY>
//       <PROPERTY name="size-numeric" units="blocks512" ...>2048</PROPERTY>
//     </OBJECT>
//
// (the COMP element only in the XML2 forms; attributes on one line.) Values
// are escaped with convertBuffer (&quot; &amp; &apos; &lt; &gt;); attribute
// texts come from the keyword repository and the dictionary, which hold no
// special characters, and are written as they are.
#include <qel/renderers/cli_XMLRenderer.h>

#include <qel/internal.h>

#include <platform/framework.h>
#include <platform/helpers.h>

namespace {

const char kPrintTable[] = "virtual void XMLRenderer::PrintTable(QEL_DESC*, int, int)";

} // namespace

XMLRenderer::XMLRenderer(services::user::Session *session) : Renderer(session) {}

XMLRenderer::~XMLRenderer() = default;

bool XMLRenderer::isBriefOutput() const {
  return outputFormat == services::user::Preferences::OUTPUT_XML2_BRIEF ||
         outputFormat == services::user::Preferences::OUTPUT_API_BRIEF;
}

bool XMLRenderer::isXML2Output() const {
  return outputFormat == services::user::Preferences::OUTPUT_XML2 ||
         outputFormat == services::user::Preferences::OUTPUT_XML2_BRIEF;
}

void XMLRenderer::PrintTable(QEL_DESC *desc, int parentOid, int indent) {
  if (!desc)
    return;
  outputStream->setSilentTruncation(true);
  using services::user::Preferences;
  for (QEL_DESC *d = desc; d; d = d->pNext) {
    char name[256] = "";
    if (d->nameId != tGSnone)
      strcpyAssert(name, getAPIName(d->nameId), sizeof name);
    strlwr(name);
    const char *basetype = qel_detail::text(getAPIName(d->tableId));

    int *order = nullptr;
    if (d->numRows > 1) {
      order = static_cast<int *>(framework::Memory::StaticAlloc(
          static_cast<std::size_t>(d->numRows) * sizeof(int)));
      if (!order) {
        framework::Logger::StaticLogMethod(0, kPrintTable, 185, "malloc failed");
        return;
      }
      SORTOutput(d, order);
    }
    Associations pending[kMaxAssociations];
    for (int p = 0; p < d->numRows; ++p) {
      const int row = order ? order[p] : p;
      const int oid = ++objectId;
      int count = 0;
      if (isXML2Output() && parentOid >= 0)
        outputStream->PutF("<COMP G=\"%d\" P=\"%d\"/>", parentOid, oid);
      outputStream->Indent(indent + 2);
      if (d->nameId != tGSnone)
        outputStream->PutF("<OBJECT basetype=\"%s\" name=\"%s\" oid=\"%d\" format=\"%s\">\n",
                           basetype, name, oid, getConsoleFormat(d));
      else
        outputStream->PutF("<OBJECT basetype=\"%s\" name=\"%s\" oid=\"%d\">\n", basetype,
                           basetype, oid);
      for (int c = 0; c < d->numColumns; ++c) {
        if (getColumnType(d->tableId, c) != COLTYPE_QEL) {
          Scratch &value = valueScratch(7000);
          Scratch &numeric = numericScratch();
          FormatData(d, c, row, value, numeric, false);
          outputStream->Indent(indent + 4);
          Print(d, row, c, value, numeric, false);
          if (isNumericColumn(d, c)) {
            value.use(7000);
            numeric.use(1024);
            outputStream->Indent(indent + 4);
            FormatData(d, c, row, value, numeric, true);
            Print(d, row, c, value, numeric, true);
          }
          continue;
        }
        const QEL_CELL cell = qel_detail::cellAt(d, row, c);
        if (!cell)
          continue;
        if (outputFormat == Preferences::OUTPUT_API ||
            outputFormat == Preferences::OUTPUT_API_BRIEF) {
          PrintTable(reinterpret_cast<QEL_DESC *>(cell), oid, indent + 2);
        } else if (isXML2Output()) {
          if (count < kMaxAssociations) {
            pending[count++] = {row * d->maxColumns + c, oid};
          } else {
            framework::Logger::StaticLog(
                0, "XMLRenderer: object %d of %s holds more than %d nested tables; "
                   "column %d is not written",
                oid, basetype, kMaxAssociations, c);
          }
        }
      }
      outputStream->Indent(indent + 2);
      outputStream->PutS("</OBJECT>\n");
      if (count > 0)
        PrintAssocs(d->cells, pending, count, indent);
    }
    framework::Memory::StaticFree(order);
  }
}

void XMLRenderer::PrintAssocs(QEL_CELL *cells, Associations *list, int count,
                              int indent) {
  for (int i = 0; i < count; ++i)
    PrintTable(reinterpret_cast<QEL_DESC *>(cells[list[i].cellIndex]),
               list[i].parentOid, indent);
}

void XMLRenderer::Print(QEL_DESC *desc, int, int column, utility::BufferStream &value,
                        utility::BufferStream &numeric, bool numericForm) {
  const _QEL_COLUMN_DESC &col = desc->pColumns[column];
  const PropertyMetaData *p = col.pProperty;
  const ColumnDataType type = getColumnType(desc->tableId, column);
  const char *name = qel_detail::keywordText(col.displayId);
  if (!numericForm)
    outputStream->PutF("<PROPERTY name=\"%s\"", name);
  else if (type == COLTYPE_BLOCKS)
    outputStream->PutF("<PROPERTY name=\"%s-numeric\" units=\"blocks512\"", name);
  else
    outputStream->PutF("<PROPERTY name=\"%s-numeric\"", name);
  if (col.qualifierNameId != tGSnone)
    outputStream->PutF(" %s=\"%s\"", qel_detail::keywordText(col.qualifierNameId),
                       qel_detail::keywordText(col.qualifierValueId));
  if (numeric.ReadAvailable() > 0) {
    outputStream->PutC(' ');
    outputStream->PutS(numeric.pTail());
  }
  if (p && p->key)
    outputStream->PutS(" key=\"true\"");
  if (isBriefOutput()) {
    outputStream->PutF(" type=\"%s\"", getDataTypeStr(type));
  } else {
    outputStream->PutF(
        " type=\"%s\" size=\"%d\" draw=\"%s\" sort=\"%s\" display-name=\"%s\"",
        numericForm ? "uint32" : getDataTypeStr(type), p ? p->size : 0,
        col.draw ? "true" : "false", getSortType(p ? p->sortType : SORT_NONE),
        qel_detail::text(getConsoleLabel(static_cast<int>(col.displayId),
                                         static_cast<int>(desc->tableId), locale)));
  }
  outputStream->PutC('>');
  convertBuffer(*outputStream, value.pTail());
  outputStream->PutS("</PROPERTY>\n");
}
