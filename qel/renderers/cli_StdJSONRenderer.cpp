// Standard JSON (RFC 8259). json-std writes one object per print, one member
// per top-level table holding its rows, a row per line:
//
//   {"volumes":[
//   {"volume-name":"vol1","size":"1.05GB","size-numeric":2048,"blocks":2048},
//   {"volume-name":"vol2","size":"N/A","size-numeric":"N/A","blocks":"18446744073709551615"}
//   ],
//   "status":[
//   {"response-type":"Success","response-type-numeric":0}
//   ]}
//
// ndjson writes each top-level row alone on its line, keyed by its basetype:
// {"volumes":{"volume-name":"vol1",...}}. Nested tables are arrays of row
// objects under their column's keyword in both ("ports":[{...},{...}]); a
// nested chain of several tables is one array, and so are the tables of
// adjacent nested columns of one keyword, so that no key repeats in a row.
//
// Keys are property keywords, the same in every locale (they come from the
// keyword repository and need no escaping). Where a table repeats a keyword
// (the XML API document then holds two properties of one name), the n-th
// key of a name gets "-n" appended ("scsi-product-id-2",
// "size-numeric-2"), so that a row never repeats a key. Integer columns (U8, U16, U32,
// I32, INDEX, U64, DOUBLE) and the numeric companions are JSON numbers when
// their text is one and its magnitude is at most 2^53, which every JSON
// reader holds exactly; larger 64-bit values and texts such as "N/A" are
// strings. Every other value is a string: quote, backslash and C0 control
// characters are escaped (\" \\ \n \r \t \b \f, else \u00XX) and each byte
// that is not valid UTF-8 becomes U+FFFD, as in the XML API document.
// A basetype that comes back at the top level after another table opens a
// second member of the same name.
#include <qel/renderers/cli_StdJSONRenderer.h>

#include <qel/internal.h>

#include <cstring>
#include <string>

namespace {

// Whether \p t is a JSON number -?(0|[1-9][0-9]*)(.[0-9]+)? whose integer
// part is at most 2^53.
bool isExactNumber(const char *p, int n) {
  int i = p && n > 0 && p[0] == '-' ? 1 : 0;
  const int start = i;
  while (i < n && p[i] >= '0' && p[i] <= '9')
    ++i;
  const int digits = i - start;
  if (digits == 0 || (digits > 1 && p[start] == '0') || digits > 16)
    return false;
  if (digits == 16 && std::memcmp(p + start, "9007199254740992", 16) > 0)
    return false;
  if (i < n && p[i] == '.') {
    const int fraction = ++i;
    while (i < n && p[i] >= '0' && p[i] <= '9')
      ++i;
    if (i == fraction)
      return false;
  }
  return i == n;
}

} // namespace

StdJSONRenderer::StdJSONRenderer(services::user::Session *session, utility::PutStream &stream)
    : Renderer(session, stream),
      m_ndjson(outputFormat == services::user::Preferences::OUTPUT_NDJSON) {}

StdJSONRenderer::~StdJSONRenderer() = default;

void StdJSONRenderer::beginDocument(const DocumentOptions &) {
  Call call(*this);
  if (!m_ndjson)
    putChar('{');
}

void StdJSONRenderer::endDocument() {
  Call call(*this);
  if (m_ndjson)
    return;
  if (m_opened)
    put("\n]");
  put("}\n");
  m_opened = false;
}

bool StdJSONRenderer::sortsRows(const Plan &) const { return true; }

void StdJSONRenderer::orderFailed() { outOfMemory("the row order"); }

void StdJSONRenderer::planTable(Plan &plan) {
  const std::string key =
      std::string("\"") + qel_detail::text(getAPIName(plan.desc->tableId)) + "\":";
  if (!addText(plan, plan.table[0], key.c_str()))
    return;
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    col.limit = 7200;
    const auto keyword = col.desc->displayId;
    // Earlier columns of the keyword; a nested-table column right after
    // one of its keyword shares its array.
    int seen = 0, companions = 0;
    for (int j = 0; j < i; ++j) {
      const Column &c = plan.columns[j];
      if (c.desc->displayId != keyword)
        continue;
      seen += !(c.type == COLTYPE_QEL && plan.columns[j + 1].type == COLTYPE_QEL &&
                plan.columns[j + 1].desc->displayId == keyword);
      companions += c.companion;
    }
    auto suffix = [](int n) { return n ? "-" + std::to_string(n + 1) : std::string(); };
    const std::string name = std::string("\"") + qel_detail::keywordText(keyword);
    if (!addText(plan, col.fixed[0], (name + suffix(seen) + "\":").c_str()) ||
        !addText(plan, col.fixed[1], (name + "-numeric" + suffix(companions) + "\":").c_str()))
      return;
  }
}

void StdJSONRenderer::closeArray(Level &level) {
  if (level.array != 0)
    putChar(']');
  level.array = 0;
}

bool StdJSONRenderer::beginTable(Plan &plan, int, int) {
  if (depth() > 0 || m_ndjson)
    return true;
  if (m_opened && m_open == plan.desc->tableId)
    return true;
  if (m_opened)
    put("\n],");
  put("\n");
  put(plan.text(plan.table[0]));
  putChar('[');
  m_open = plan.desc->tableId;
  m_opened = true;
  m_levels[0].rows = 0;
  return true;
}

void StdJSONRenderer::beginRow(Plan &plan, int, int, int) {
  Level &level = m_levels[depth()];
  level.first = true;
  level.array = 0;
  if (depth() == 0 && m_ndjson) {
    putChar('{');
    put(plan.text(plan.table[0]));
  } else if (depth() == 0) {
    put(level.rows > 0 ? ",\n" : "\n");
  } else if (level.rows > 0) {
    putChar(',');
  }
  ++level.rows;
  putChar('{');
}

void StdJSONRenderer::cell(Plan &plan, const Column &col, Text value, const char *,
                           bool numericForm, int) {
  Level &level = m_levels[depth()];
  closeArray(level);
  if (!level.first)
    putChar(',');
  level.first = false;
  put(plan.text(col.fixed[numericForm ? 1 : 0]));
  if ((numericForm || numberText(col.type)) && isExactNumber(value.data, value.size)) {
    put(value);
    return;
  }
  putChar('"');
  putJson(value);
  putChar('"');
}

void StdJSONRenderer::nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) {
  Level &level = m_levels[depth()];
  const std::uint32_t key = col.desc->displayId;
  if (level.array != key) {
    closeArray(level);
    if (!level.first)
      putChar(',');
    level.first = false;
    put(plan.text(col.fixed[0]));
    putChar('[');
    level.array = key;
    if (depth() < kMaxDepth)
      m_levels[depth() + 1].rows = 0;
  }
  if (nested)
    walk(nested, objectId, indent);
}

void StdJSONRenderer::endRow(Plan &, int, int) {
  closeArray(m_levels[depth()]);
  putChar('}');
  if (depth() == 0 && m_ndjson)
    put("}\n");
}
