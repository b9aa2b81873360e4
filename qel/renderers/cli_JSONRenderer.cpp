// The web interface's script. One constructor call per row:
//
//   new APIVolumes([
//       new APIProp({name:"volume-name",value:"vol1"}),
//       new APIProp({name:"size",value:"1.05GB"}),
//       new APIProp({name:"size-numeric",value:"2048"})],
//       {basetype:"volumes",name:"volume",oid:"1"})
//
// Keys are unquoted: it is a script, not strict JSON. Names are written as
// they are. Values escape double quotes, backslashes and line breaks (as
// \" \\ \n \r), so that every value stays inside its string literal: STRING
// and STRING_N texts through the cell text, every other value here.
#include <qel/renderers/cli_JSONRenderer.h>

#include <qel/internal.h>

#include <qel/platform/helpers.h>

#include <cctype>
#include <cstring>
#include <string>

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

void JSONRenderer::beginDocument(const DocumentOptions &) { put("new APIData(["); }

void JSONRenderer::endDocument() { put("\n])\n"); }

// Between tables of one chain endTable writes the comma; a table that
// starts a page decides it here, from what the last page ended with.
bool JSONRenderer::beginTable(Plan &plan, int, int) {
  if (paged() && depth() == 0) {
    const QEL_DESC *d = plan.desc;
    if (m_comma && !continues() && (d->numRows >= 1 || d->jsonSeparator))
      putChar(',');
    m_comma = false;
  }
  return true;
}

bool JSONRenderer::sortsRows(const Plan &) const { return false; }

void JSONRenderer::orderFailed() {}

void JSONRenderer::planTable(Plan &plan) {
  QEL_DESC *d = plan.desc;
  char type[80];
  strcpyAssert(type, getAPIName(d->tableId), sizeof type);
  char name[256] = "";
  if (d->nameId != tGSnone)
    strcpyAssert(name, getAPIName(d->nameId), sizeof name);
  const std::string call = std::string("new API") + toJson(type) + "([";
  const std::string identity = std::string("{basetype:\"") +
                               qel_detail::text(getAPIName(d->tableId)) + "\",name:\"" +
                               strlwr(name) + "\",oid:\"";
  if (!addText(plan, plan.table[0], call.c_str()) ||
      !addText(plan, plan.table[1], identity.c_str()))
    return;
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    col.limit = 7200;
    if (col.type == COLTYPE_QEL)
      continue;
    const std::string prop =
        std::string("new APIProp({name:\"") + qel_detail::keywordText(col.desc->displayId);
    if (!addText(plan, col.fixed[0], (prop + "\",value:\"").c_str()) ||
        !addText(plan, col.fixed[1], (prop + "-numeric\",value:\"").c_str()))
      return;
  }
}

void JSONRenderer::beginRow(Plan &plan, int, int position, int indent) {
  Level &level = m_levels[depth()];
  level.oid = ++objectId;
  level.first = true;
  put(position == 0 ? "\n" : ",\n");
  pad(indent + 2);
  put(plan.text(plan.table[0]));
}

// Texts other than STRING and STRING_N normal forms (which the cell text
// escaped already) go out as they are unless they hold a character that
// would end the literal.
void JSONRenderer::putScript(Text value) {
  int run = 0;
  for (int i = 0; i < value.size; ++i) {
    const char c = value.data[i];
    const char escaped = c == '"' ? '"' : c == '\\' ? '\\' : c == '\n' ? 'n' : c == '\r' ? 'r' : 0;
    if (!escaped)
      continue;
    put(value.data + run, i - run);
    putChar('\\');
    putChar(escaped);
    run = i + 1;
  }
  put(value.data + run, value.size - run);
}

void JSONRenderer::cell(Plan &plan, const Column &col, Text value, const char *,
                        bool numericForm, int indent) {
  Level &level = m_levels[depth()];
  put(numericForm || !level.first ? ",\n" : "\n");
  level.first = false;
  pad(indent + 4);
  put(plan.text(col.fixed[numericForm ? 1 : 0]));
  if (!numericForm && (col.type == COLTYPE_STRING || col.type == COLTYPE_STRING_N))
    put(value);
  else
    putScript(value);
  put("\"})");
  if (col.index == plan.count - 1 && (numericForm || !col.companion))
    putChar(']');
}

void JSONRenderer::nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) {
  Level &level = m_levels[depth()];
  if (nested && nested->numRows >= 1) {
    if (!level.first)
      putChar(',');
    walk(nested, objectId, indent + 2);
    level.first = false;
  }
  if (col.index == plan.count - 1)
    putChar(']');
}

void JSONRenderer::endRow(Plan &plan, int, int indent) {
  put(",\n");
  pad(indent + 4);
  put(plan.text(plan.table[1]));
  putInt(m_levels[depth()].oid);
  put("\"})");
}

void JSONRenderer::endTable(Plan &plan, int) {
  const QEL_DESC *d = plan.desc;
  const QEL_DESC *next = d->pNext;
  const bool rows = rowsBefore() + d->numRows >= 1;
  if (next && rows && (next->numRows >= 1 || next->jsonSeparator))
    putChar(',');
  if (!next && paged() && depth() == 0)
    m_comma = rows;
}
