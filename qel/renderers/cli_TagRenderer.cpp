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

#include <qel/platform/debug.h>
#include <qel/platform/helpers.h>

#include <string>

TagRenderer::TagRenderer(services::user::Session *session) : Renderer(session) {}

TagRenderer::~TagRenderer() = default;

void TagRenderer::beginDocument(const DocumentOptions &) {
  put(qel_detail::kXmlDeclaration);
  put("<!-- This format is deprecated and will not be available in future versions-->\n");
  put("<data>\n");
}

void TagRenderer::endDocument() { put("</data>\n"); }

bool TagRenderer::sortsRows(const Plan &) const { return false; }

void TagRenderer::orderFailed() {}

void TagRenderer::tableTag(QEL_DESC *head, bool open, int indent) {
  pad(indent + 2);
  const char *element = getXMLName(head->tableId);
  if (!element) {
    logErrorPrint("Table %s does not have an XML name", qel_detail::keywordText(head->tableId));
    element = "undefined";
  }
  put(open ? "<" : "</");
  put(element);
  put(">\n");
}

void TagRenderer::beginChain(QEL_DESC *head, int indent) { tableTag(head, true, indent); }

void TagRenderer::endChain(QEL_DESC *head, int indent) { tableTag(head, false, indent); }

void TagRenderer::planTable(Plan &plan) {
  QEL_DESC *d = plan.desc;
  if (d->nameId != tGSnone) {
    char name[256] = "";
    strcpyAssert(name, getXMLName(d->nameId), sizeof name);
    strlwr(name);
    if (!addText(plan, plan.table[0], name))
      return;
  }
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    col.companion = false;
    if (col.type == COLTYPE_QEL)
      continue;
    const _QEL_COLUMN_DESC &c = *col.desc;
    const std::string element = qel_detail::text(getXMLName(c.displayId));
    std::string qualifier = ">";
    if (c.qualifierNameId != tGSnone)
      qualifier = std::string(" ") + qel_detail::keywordText(c.qualifierNameId) + "=\"" +
                  qel_detail::keywordText(c.qualifierValueId) + "\">";
    if (!addText(plan, col.fixed[0], ("<" + element).c_str()) ||
        !addText(plan, col.fixed[1], qualifier.c_str()) ||
        !addText(plan, col.fixed[2], ("</" + element + ">\n").c_str()))
      return;
  }
}

// A row element carries its index only when its table has more than one
// row. In a paged print the one row of a page's last table may be followed
// by more on the next page, so that row is held until the next row (it gets
// index="0") or anything else (it does not) comes.
void TagRenderer::beginRow(Plan &plan, int row, int, int indent) {
  ++objectId;
  if (depth() == 0 && holding())
    release(rowsBefore() > 0 ? " index=\"0\"" : nullptr);
  const QEL_DESC *d = plan.desc;
  if (d->nameId == tGSnone)
    return;
  pad(indent + 2);
  putChar('<');
  put(plan.text(plan.table[0]));
  if (paged() && depth() == 0 && !d->pNext && rowsBefore() == 0 && d->numRows == 1)
    hold();
  if (d->numRows > 1 || rowsBefore() > 0) {
    put(" index=\"");
    putInt(row);
    putChar('"');
  }
  put(">\n");
}

void TagRenderer::cell(Plan &plan, const Column &col, Text value, const char *units, bool,
                       int indent) {
  pad(indent + 4);
  put(plan.text(col.fixed[0]));
  if (*units && col.desc->qualifierNameId == tGSnone) {
    put(" units=\"");
    put(units);
    putChar('"');
  }
  put(plan.text(col.fixed[1]));
  put(value);
  put(plan.text(col.fixed[2]));
}

void TagRenderer::nestedCell(Plan &, const Column &, QEL_DESC *nested, int indent) {
  if (nested)
    walk(nested, 0, indent + 4);
}

void TagRenderer::endRow(Plan &plan, int, int indent) {
  if (plan.desc->nameId == tGSnone)
    return;
  pad(indent + 2);
  put("</");
  put(plan.text(plan.table[0]));
  put(">\n");
}
