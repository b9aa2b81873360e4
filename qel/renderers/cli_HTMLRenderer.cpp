// A self-contained HTML page: inline style and script, nothing fetched.
// Every value is in the markup, so the page reads (and prints) with
// JavaScript off; the script only adds a filter box per top-level table and
// sorting by a click (or Enter) on a column header.
//
//   <table class="qel" data-basetype="volumes"><caption>volumes</caption>
//   <thead><tr><th scope="col" data-key="volume-name">Volume Name</th>
//   <th scope="col" class="n" data-key="size">Size</th>
//   <th scope="col" data-key="size-numeric" hidden>size-numeric</th>
//   <th scope="col" data-key="ports" data-nested>Ports</th></tr></thead>
//   <tbody>
//   <tr><td>vol1</td><td class="n">1.05GB</td><td hidden>2048</td>
//   <td><details><summary>port (2)</summary><table class="qel" ...>...</table></details></td></tr>
//   </tbody></table>
//
// Each property of the XML API document is one cell: the numeric companions
// are hidden cells the sort uses (sizes sort by their blocks), and numbers
// and sizes are right-aligned (class "n"). Nested tables are collapsed in a
// details element in their holder's cell, so they move with the row when it
// is sorted; printing opens them all. Values and labels are escaped as in
// the XML API document (the five XML specials as entities, control
// characters dropped, bytes that are not valid UTF-8 as U+FFFD).
#include <qel/renderers/cli_HTMLRenderer.h>

#include <qel/internal.h>

#include <cstring>
#include <string>

namespace {

const char kHead[] =
    "<!DOCTYPE html>\n<html lang=\"";
const char kStyle[] =
    "\"><head><meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<style>\n"
    "body{font:14px/1.4 system-ui,sans-serif;margin:1em;color:#111;background:#fff}\n"
    "table.qel{border-collapse:collapse;margin:0 0 1.5em}\n"
    "table.qel caption{text-align:left;font-weight:bold;padding:.3em 0}\n"
    "table.qel th,table.qel td{border:1px solid #bbb;padding:.2em .5em;vertical-align:top;"
    "text-align:left}\n"
    "table.qel th{background:#eee;white-space:nowrap}\n"
    "table.qel .n{text-align:right;font-variant-numeric:tabular-nums}\n"
    "table.qel th button{all:unset;cursor:pointer}\n"
    "table.qel th button:focus-visible{outline:2px solid #06c}\n"
    "table.qel th[aria-sort=ascending]::after{content:\" \\25B2\"}\n"
    "table.qel th[aria-sort=descending]::after{content:\" \\25BC\"}\n"
    "table.qel tbody tr:nth-child(even){background:#f6f6f6}\n"
    "input.filter{margin:.5em 0;padding:.2em}\n"
    "@media print{input.filter{display:none}table.qel th{background:none}"
    "body{margin:0}}\n"
    "</style>\n<title>";
const char kBody[] = "</title></head>\n<body>\n";
const char kScript[] =
    "<script>\n"
    "(function () {\n"
    "  function num(t) { return t.trim() !== '' && !isNaN(t) ? Number(t) : null; }\n"
    "  function key(row, i, numeric) {\n"
    "    var c = row.cells[numeric ? i + 1 : i];\n"
    "    return c ? c.textContent : '';\n"
    "  }\n"
    "  function sortBy(table, th) {\n"
    "    var ths = th.parentNode.cells, i = Array.prototype.indexOf.call(ths, th);\n"
    "    var next = ths[i + 1];\n"
    "    var numeric = !!next && next.dataset.key === th.dataset.key + '-numeric';\n"
    "    var up = th.getAttribute('aria-sort') !== 'ascending';\n"
    "    for (var j = 0; j < ths.length; j++) ths[j].removeAttribute('aria-sort');\n"
    "    th.setAttribute('aria-sort', up ? 'ascending' : 'descending');\n"
    "    var body = table.tBodies[0], rows = Array.prototype.slice.call(body.rows);\n"
    "    rows.sort(function (a, b) {\n"
    "      var x = key(a, i, numeric), y = key(b, i, numeric), p = num(x), q = num(y);\n"
    "      var r = p !== null && q !== null ? p - q : x.localeCompare(y, undefined, {numeric: true});\n"
    "      return up ? r : -r;\n"
    "    });\n"
    "    rows.forEach(function (r) { body.appendChild(r); });\n"
    "  }\n"
    "  document.querySelectorAll('table.qel').forEach(function (table) {\n"
    "    table.tHead.querySelectorAll('th:not([hidden]):not([data-nested])').forEach(function (th) {\n"
    "      var b = document.createElement('button');\n"
    "      b.type = 'button';\n"
    "      while (th.firstChild) b.appendChild(th.firstChild);\n"
    "      th.appendChild(b);\n"
    "      b.addEventListener('click', function () { sortBy(table, th); });\n"
    "    });\n"
    "    if (table.parentNode !== document.body) return;\n"
    "    var f = document.createElement('input');\n"
    "    f.type = 'search';\n"
    "    f.className = 'filter';\n"
    "    f.setAttribute('aria-label', 'Filter ' + table.dataset.basetype);\n"
    "    f.placeholder = '\\u2315';\n"
    "    f.addEventListener('input', function () {\n"
    "      var t = f.value.toLowerCase();\n"
    "      Array.prototype.forEach.call(table.tBodies[0].rows, function (r) {\n"
    "        r.hidden = t !== '' && r.textContent.toLowerCase().indexOf(t) < 0;\n"
    "      });\n"
    "    });\n"
    "    table.parentNode.insertBefore(f, table);\n"
    "  });\n"
    "  window.addEventListener('beforeprint', function () {\n"
    "    document.querySelectorAll('details').forEach(function (d) { d.open = true; });\n"
    "  });\n"
    "})();\n"
    "</script>\n"
    "</body></html>\n";

const char *languageOf(LocaleCode locale) {
  switch (locale) {
  case LOCALE_ES:
    return "es";
  case LOCALE_FR:
    return "fr";
  case LOCALE_DE:
    return "de";
  case LOCALE_IT:
    return "it";
  case LOCALE_JP:
    return "ja";
  case LOCALE_NL:
    return "nl";
  case LOCALE_ZH_CHS:
    return "zh-Hans";
  case LOCALE_ZH_CHT:
    return "zh-Hant";
  case LOCALE_KO:
    return "ko";
  default:
    return "en";
  }
}


// Numbers and sizes are right-aligned.
bool rightAligned(ColumnDataType type) {
  return Renderer::numberText(type) || type == COLTYPE_BLOCKS || type == COLTYPE_BLOCKS2BYTES;
}

} // namespace

HTMLRenderer::HTMLRenderer(services::user::Session *session, utility::PutStream &stream)
    : Renderer(session, stream) {}

HTMLRenderer::~HTMLRenderer() = default;

void HTMLRenderer::beginDocument(const DocumentOptions &options) {
  Call call(*this);
  put(kHead);
  put(languageOf(locale));
  put(kStyle);
  const char *title = options.request && *options.request ? options.request : "Tables";
  putXml({title, static_cast<int>(std::strlen(title))});
  put(kBody);
}

void HTMLRenderer::endDocument() {
  Call call(*this);
  put(kScript);
}

bool HTMLRenderer::sortsRows(const Plan &) const { return true; }

void HTMLRenderer::orderFailed() { outOfMemory("the row order"); }

// table[0]: the table up to its first row; table[1]: after its last.
// fixed[0]: a value cell's start tag; fixed[1] its companion's.
void HTMLRenderer::planTable(Plan &plan) {
  const QEL_DESC *d = plan.desc;
  const std::string basetype = xmlEscaped(getAPIName(d->tableId));
  std::string head = "<table class=\"qel\" data-basetype=\"" + basetype + "\"><caption>" +
                     basetype + "</caption>\n<thead><tr>";
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    const std::string keyword = xmlEscaped(qel_detail::keywordText(col.desc->displayId));
    const char *label = getConsoleLabel(static_cast<int>(col.desc->displayId),
                                        static_cast<int>(d->tableId), locale);
    const bool right = rightAligned(col.type);
    head += std::string("<th scope=\"col\"") + (right ? " class=\"n\"" : "") + " data-key=\"" +
            keyword + "\"" + (col.type == COLTYPE_QEL ? " data-nested" : "") + ">" +
            xmlEscaped(label && *label ? label : keyword.c_str()) + "</th>";
    if (col.companion)
      head += "<th scope=\"col\" data-key=\"" + keyword + "-numeric\" hidden>" + keyword +
              "-numeric</th>";
    if (!addText(plan, col.fixed[0], right ? "<td class=\"n\">" : "<td>") ||
        !addText(plan, col.fixed[1], "<td hidden>"))
      return;
  }
  head += "</tr></thead>\n<tbody>\n";
  if (!addText(plan, plan.table[0], head.c_str()))
    return;
  addText(plan, plan.table[1], kTableEnd);
}

bool HTMLRenderer::beginTable(Plan &plan, int, int) {
  if (paged() && depth() == 0) {
    if (continues())
      return true;
    if (m_open)
      put(kTableEnd);
  }
  put(plan.text(plan.table[0]));
  return true;
}

void HTMLRenderer::endTable(Plan &plan, int) {
  // Paged: the table may go on in the next page, so it stays open until a
  // page shows otherwise or the print ends.
  m_open = paged() && depth() == 0 && !plan.desc->pNext;
  if (!m_open)
    put(plan.text(plan.table[1]));
}

void HTMLRenderer::endChain(QEL_DESC *, int) {
  if (paged() && depth() == 0 && m_open)
    put(kTableEnd);
  m_open = false;
}

void HTMLRenderer::beginRow(Plan &, int, int, int) { put("<tr>"); }

void HTMLRenderer::cell(Plan &plan, const Column &col, Text value, const char *,
                        bool numericForm, int) {
  put(plan.text(col.fixed[numericForm ? 1 : 0]));
  putXml(value);
  put("</td>");
}

void HTMLRenderer::nestedCell(Plan &, const Column &, QEL_DESC *nested, int indent) {
  put("<td>");
  int rows = 0;
  for (const QEL_DESC *d = nested; d; d = d->pNext)
    rows += d->numRows > 0 ? d->numRows : 0;
  if (rows > 0) {
    put("<details><summary>");
    put(qel_detail::text(getAPIName(nested->tableId)));
    put(" (");
    putInt(rows);
    put(")</summary>\n");
    walk(nested, objectId, indent);
    put("</details>");
  }
  put("</td>");
}

void HTMLRenderer::endRow(Plan &, int, int) { put("</tr>\n"); }
