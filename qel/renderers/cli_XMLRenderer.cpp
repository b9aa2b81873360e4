// XML API document bodies. One OBJECT per row, one PROPERTY per column:
//
//   <COMP G="0" P="1"/>  <OBJECT basetype="volumes" name="volume" oid="1" format="rows">
//       <PROPERTY name="size" units="MB" type="string" size="10" draw="true"
//        sort="size" display-name="Size">1.05MB</PROPERTY>
//       <PROPERTY name="size-numeric" units="blocks512" ...>2048</PROPERTY>
//     </OBJECT>
//
// (the COMP element only in the XML2 forms; attributes on one line.) Values
// are escaped with convertBuffer (&quot; &amp; &apos; &lt; &gt;, and bytes
// XML cannot hold replaced); attribute texts come from the keyword
// repository and the dictionary, which hold no special characters, and are
// written as they are. Everything but the value and a size's units is the
// same for every row of a column: the plan holds it as two finished runs of
// bytes around the units, and one for the numeric companion.
#include <qel/renderers/cli_XMLRenderer.h>

#include <qel/internal.h>

#include <qel/platform/framework.h>
#include <qel/platform/helpers.h>

#include <cstring>
#include <string>

namespace {

const char kPrintTable[] = "virtual void XMLRenderer::PrintTable(QEL_DESC*, int, int)";
// The line the row-order failure has always been logged with.
constexpr int kOrderFailedLine = 185;

} // namespace

XMLRenderer::XMLRenderer(services::user::Session *session) : Renderer(session) {
  using services::user::Preferences;
  m_brief = outputFormat == Preferences::OUTPUT_XML2_BRIEF ||
            outputFormat == Preferences::OUTPUT_API_BRIEF;
  m_xml2 = outputFormat == Preferences::OUTPUT_XML2 ||
           outputFormat == Preferences::OUTPUT_XML2_BRIEF;
}

XMLRenderer::~XMLRenderer() = default;

void XMLRenderer::beginDocument(const DocumentOptions &options) {
  if (options.includeXmlDeclaration)
    put(qel_detail::kXmlDeclaration);
  if (options.includeDtd)
    put(getDTDString());
  put("<RESPONSE VERSION=\"L100\"");
  if (options.request && *options.request) {
    put(" REQUEST=\"");
    putXml({options.request, static_cast<int>(std::strlen(options.request))});
    putChar('"');
  }
  put(">\n");
}

void XMLRenderer::endDocument() { put("</RESPONSE>\n"); }

bool XMLRenderer::beginTable(Plan &, int parentOid, int) {
  m_levels[depth()].parentOid = parentOid;
  return true;
}

bool XMLRenderer::sortsRows(const Plan &) const { return true; }

void XMLRenderer::orderFailed() {
  framework::Logger::StaticLogMethod(0, kPrintTable, kOrderFailedLine, "malloc failed");
}

void XMLRenderer::planTable(Plan &plan) {
  QEL_DESC *d = plan.desc;
  // The object's start tag up to its id, and after it.
  const char *basetype = qel_detail::text(getAPIName(d->tableId));
  std::string head = "<OBJECT basetype=\"";
  head += basetype;
  head += "\" name=\"";
  std::string tail = "\"";
  if (d->nameId != tGSnone) {
    char name[256] = "";
    strcpyAssert(name, getAPIName(d->nameId), sizeof name);
    head += strlwr(name);
    tail += " format=\"";
    tail += getConsoleFormat(d);
    tail += "\"";
  } else {
    head += basetype;
  }
  head += "\" oid=\"";
  tail += ">\n";
  if (!addText(plan, plan.table[0], head.c_str()) || !addText(plan, plan.table[1], tail.c_str()))
    return;

  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    if (col.type == COLTYPE_QEL)
      continue;
    const _QEL_COLUMN_DESC &c = *col.desc;
    const PropertyMetaData *p = col.property;
    const std::string name = qel_detail::keywordText(c.displayId);
    std::string qualifier;
    if (c.qualifierNameId != tGSnone) {
      qualifier = " ";
      qualifier += qel_detail::keywordText(c.qualifierNameId);
      qualifier += "=\"";
      qualifier += qel_detail::keywordText(c.qualifierValueId);
      qualifier += "\"";
    }
    auto metadata = [&](bool numericForm) {
      std::string m;
      if (p && p->key)
        m += " key=\"true\"";
      m += " type=\"";
      if (m_brief) {
        m += getDataTypeStr(col.type);
        m += "\"";
      } else {
        m += numericForm ? "uint32" : getDataTypeStr(col.type);
        m += "\" size=\"" + std::to_string(p ? p->size : 0) + "\" draw=\"";
        m += c.draw ? "true" : "false";
        m += "\" sort=\"";
        m += getSortType(p ? p->sortType : SORT_NONE);
        m += "\" display-name=\"";
        m += qel_detail::text(getConsoleLabel(static_cast<int>(c.displayId),
                                              static_cast<int>(d->tableId), locale));
        m += "\"";
      }
      return m + ">";
    };
    const std::string start = "<PROPERTY name=\"" + name + "\"" + qualifier;
    std::string numeric = "<PROPERTY name=\"" + name + "-numeric\"";
    if (col.type == COLTYPE_BLOCKS)
      numeric += " units=\"blocks512\"";
    numeric += qualifier + metadata(true);
    if (!addText(plan, col.fixed[0], start.c_str()) ||
        !addText(plan, col.fixed[1], metadata(false).c_str()) ||
        !addText(plan, col.fixed[2], numeric.c_str()))
      return;
  }
}

void XMLRenderer::beginRow(Plan &plan, int, int, int indent) {
  Level &level = m_levels[depth()];
  level.oid = ++objectId;
  level.pending = 0;
  if (m_xml2 && level.parentOid >= 0) {
    put("<COMP G=\"");
    putInt(level.parentOid);
    put("\" P=\"");
    putInt(level.oid);
    put("\"/>");
  }
  pad(indent + 2);
  put(plan.text(plan.table[0]));
  putInt(level.oid);
  put(plan.text(plan.table[1]));
}

void XMLRenderer::cell(Plan &plan, const Column &col, Text value, const char *units,
                       bool numericForm, int indent) {
  pad(indent + 4);
  if (numericForm) {
    put(plan.text(col.fixed[2]));
  } else {
    put(plan.text(col.fixed[0]));
    if (*units) {
      put(" units=\"");
      put(units);
      putChar('"');
    }
    put(plan.text(col.fixed[1]));
  }
  putXml(value);
  put("</PROPERTY>\n");
}

void XMLRenderer::nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) {
  if (!nested)
    return;
  Level &level = m_levels[depth()];
  if (!m_xml2) {
    walk(nested, level.oid, indent + 2);
  } else if (level.pending < kMaxAssociations) {
    level.assocs[level.pending++] = {nested, level.oid};
  } else {
    framework::Logger::StaticLog(
        0, "XMLRenderer: object %d of %s holds more than %d nested tables; column %d is not written",
        level.oid, qel_detail::text(getAPIName(plan.desc->tableId)), kMaxAssociations, col.index);
  }
}

void XMLRenderer::endRow(Plan &, int, int indent) {
  pad(indent + 2);
  put("</OBJECT>\n");
  Level &level = m_levels[depth()];
  for (int i = 0; i < level.pending && !failed(); ++i)
    walk(level.assocs[i].nested, level.assocs[i].parentOid, indent);
}
