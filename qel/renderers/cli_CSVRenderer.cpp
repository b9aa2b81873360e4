// CSV (RFC 4180) and TSV. One table level: a header row, then one line per
// row in the XML API's row order:
//
//   volume-name,size,size-numeric,health,health-numeric
//   vol1,1.05GB,2048,OK,0
//   "vol ""2"", backup",N/A,N/A,Degraded,1
//
// A field is put in double quotes, its quotes doubled, when it holds the
// delimiter, a quote, CR or LF; otherwise it is written as it is. Both forms
// use this quoting (TSV with a tab as delimiter), so a value may hold any
// character. Bytes that are not valid UTF-8 become U+FFFD, as in the XML API
// document.
//
// The header holds property keywords, or with Preferences::setHeaderLabels
// the columns' labels in the session's locale (companions keep their
// "-numeric" keyword: they have no label). Nested tables are not flattened
// into their holder's cells: a nested-table column gets no field, and a user
// who wants a nested table names its basetype (Preferences::
// setSelectedTable); its rows are then written from every holder, and the
// holders' rows are not. Other tables of the chain (the command's status)
// are left out. The header comes from the first descriptor written.
#include <qel/renderers/cli_CSVRenderer.h>

#include <qel/internal.h>

#include <string>

CSVRenderer::CSVRenderer(services::user::Session *session, utility::PutStream &stream)
    : Renderer(session, stream) {
  using services::user::Preferences;
  const bool tsv = outputFormat == Preferences::OUTPUT_TSV;
  m_delimiter = tsv ? '\t' : ',';
  m_newline = tsv ? "\n" : "\r\n";
  m_labels = session && session->getPreferences().getHeaderLabels();
  m_selected = session ? session->getPreferences().getSelectedTable() : tGSnone;
}

CSVRenderer::~CSVRenderer() = default;

bool CSVRenderer::sortsRows(const Plan &) const { return true; }

void CSVRenderer::orderFailed() { outOfMemory("the row order"); }

void CSVRenderer::planTable(Plan &) {}

// The header line, written once, its fields quoted as values are.
void CSVRenderer::putHeader(const Plan &plan) {
  bool first = true;
  auto field = [&](const std::string &text) {
    if (!first)
      putChar(m_delimiter);
    first = false;
    putCsv({text.data(), static_cast<int>(text.size())}, m_delimiter);
  };
  for (int i = 0; i < plan.count; ++i) {
    const Column &col = plan.columns[i];
    if (col.type == COLTYPE_QEL)
      continue;
    const std::string keyword = qel_detail::keywordText(col.desc->displayId);
    field(m_labels ? qel_detail::text(getConsoleLabel(static_cast<int>(col.desc->displayId),
                                                      static_cast<int>(plan.desc->tableId),
                                                      locale))
                   : keyword);
    if (col.companion)
      field(keyword + "-numeric");
  }
  put(m_newline);
}

bool CSVRenderer::beginTable(Plan &plan, int, int) {
  if (m_selected == tGSnone)
    m_selected = plan.desc->tableId;
  const bool match = plan.desc->tableId == m_selected;
  m_match[depth()] = match;
  if (match && !m_header) {
    putHeader(plan);
    m_header = true;
  }
  return true;
}

void CSVRenderer::beginRow(Plan &, int, int, int) { m_first = true; }

void CSVRenderer::cell(Plan &, const Column &, Text value, const char *, bool, int) {
  if (!m_match[depth()])
    return;
  if (!m_first)
    putChar(m_delimiter);
  m_first = false;
  putCsv(value, m_delimiter);
}

// The selected table's own nested tables are not written: only the levels
// above it are searched.
void CSVRenderer::nestedCell(Plan &, const Column &, QEL_DESC *nested, int indent) {
  if (!m_match[depth()] && nested)
    walk(nested, objectId, indent);
}

void CSVRenderer::endRow(Plan &, int, int) {
  if (m_match[depth()])
    put(m_newline);
  m_first = true;
}
