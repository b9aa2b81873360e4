// Console tables. Six layouts, chosen per descriptor by consoleFormat:
//
//   0 (and > 5) column table    Vdisk   Name       Size
//                               ---------------------------
//                               vd01    vol0001    1.05MB
//                               ---------------------------
//   1 pairs                     Name: vol0001      (one line per column)
//   2 packed                    vol0001 1.05MB     (values cut to width)
//   3 labeled                   Volumes [Name (vol0001) Size (1.05MB) ...
//   4 rows without header       rows only, no header, no rules
//   5 status                    Success: Command completed successfully
//
// Headings use the English abbreviation of the column (its label when there
// is none). Column widths are the property's size, or for width-tracking
// columns the widest value filled or the heading. A line wraps with "\n  "
// before a column that would reach the screen width; rules never exceed it.
// Text is written as it is: the console escapes nothing.
//
// A paged print writes a table's header and rules once. Its columns are as
// wide as the widest value (or heading) of the pages seen so far: the first
// page sets the widths as a whole print of its rows would, and a later page
// with a wider value widens the column from that page on, never narrowing
// it. Rows of later pages may therefore stand wider than the header.
#include <qel/renderers/cli_ConsoleRenderer.h>

#include <qel/internal.h>

#include <qel/platform/debug.h>
#include <qel/platform/framework.h>
#include <qel/platform/helpers.h>

#include <algorithm>
#include <cstring>

namespace {

const char kPrintTable[] = "virtual void ConsoleRenderer::PrintTable(QEL_DESC*, int, int)";
// The source lines these log records have always carried; log readers
// match on them.
constexpr int kNullLine = 375;
constexpr int kOrderFailedLine = 508;
constexpr int kRowLine = 426;
constexpr int kNewEntryLine = 429;
constexpr unsigned kRowTrace = 3261;
// A header cell is formatted in a scratch of this many bytes.
constexpr int kHeaderScratch = 7000;

// English console texts; a label the dictionary lacks reads as "".
const char *label(unsigned token, int tableId) {
  return qel_detail::text(getConsoleLabel(static_cast<int>(token), tableId, LOCALE_EN));
}

const char *heading(unsigned token, int tableId) {
  const char *abbreviation = getConsoleAbbreviation(static_cast<int>(token), tableId, LOCALE_EN);
  return abbreviation && *abbreviation ? abbreviation : label(token, tableId);
}

int columnWidth(const _QEL_COLUMN_DESC &col) {
  const PropertyMetaData *p = col.pProperty;
  if (!p)
    return 0;
  return p->trackWidth ? col.width : p->size;
}

} // namespace

ConsoleRenderer::ConsoleRenderer(services::user::Session *session) : Renderer(session) {}

ConsoleRenderer::ConsoleRenderer(services::user::Session *session, utility::PutStream &stream)
    : Renderer(session, stream) {}

ConsoleRenderer::~ConsoleRenderer() { framework::Memory::StaticFree(m_widths); }

void ConsoleRenderer::endDocument() { put("\n"); }

void ConsoleRenderer::PrintTable(QEL_DESC *desc, int parentOid, int indent) {
  Call call(*this);
  if (!desc) {
    framework::Logger::StaticLogMethod(0, kPrintTable, kNullLine, "pDesc is NULL");
    return;
  }
  walk(desc, parentOid, indent);
}

// Plan texts: table[0] the title, table[1] the table's own label; per
// column fixed[0] its label and fixed[1] its heading (with the qualifier).
void ConsoleRenderer::planTable(Plan &plan) {
  QEL_DESC *d = plan.desc;
  const int tableId = static_cast<int>(d->tableId);
  if (d->nameId != tGSnone) {
    char title[256] = "";
    strcpyAssert(title, label(d->nameId, tableId), sizeof title);
    if (!addText(plan, plan.table[0], title))
      return;
  }
  if (!addText(plan, plan.table[1], label(d->tableId, 0)))
    return;
  const int layout = d->consoleFormat <= QEL_FORMAT_STATUS ? d->consoleFormat : int{QEL_FORMAT_ROWS};
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    col.companion = false;
    col.limit = layout == QEL_FORMAT_STATUS ? 600
                : layout == QEL_FORMAT_PACKED || layout == QEL_FORMAT_LABELED
                    ? std::clamp(col.property ? col.property->size : 0, 0, 7200)
                    : 7000;
    const _QEL_COLUMN_DESC &c = *col.desc;
    if (!addText(plan, col.fixed[0], label(c.displayId, tableId)) ||
        !addText(plan, col.fixed[1], heading(c.displayId, tableId)))
      return;
    if (c.qualifierValueId != tGSnone) {
      Span open{}, qualifier{}, close{};
      if (!addText(plan, open, "(") || !addText(plan, qualifier, heading(c.qualifierValueId, tableId)) ||
          !addText(plan, close, ")"))
        return;
      col.fixed[1].size += open.size + qualifier.size + close.size; // contiguous
    }
  }
}

bool ConsoleRenderer::visits(const Column &col) const { return col.desc->print == 1; }

bool ConsoleRenderer::sortsRows(const Plan &) const {
  return m_levels[depth()].layout == QEL_FORMAT_ROWS;
}

void ConsoleRenderer::orderFailed() {
  framework::Logger::StaticLogMethod(0, kPrintTable, kOrderFailedLine, "malloc failed");
}

bool ConsoleRenderer::beginTable(Plan &plan, int, int indent) {
  QEL_DESC *d = plan.desc;
  if (d->printed)
    return false;
  if (paged() && depth() == 0) {
    if (continues())
      return keepWidths(plan, false);
    if (m_closing)
      closeTable(true);
  }
  Level &level = m_levels[depth()];
  level.layout = d->consoleFormat <= QEL_FORMAT_STATUS ? d->consoleFormat : int{QEL_FORMAT_ROWS};
  level.rule = 0;
  if (level.layout == QEL_FORMAT_ROWS)
    level.rule = printHeader(plan, indent);
  for (int i = 0; i < plan.count; ++i)
    plan.columns[i].width = columnWidth(*plan.columns[i].desc);
  if (paged() && depth() == 0)
    return keepWidths(plan, true);
  return true;
}

// Paged: the widths of the table so far (none when \p fresh: a new table),
// widened by this page's.
bool ConsoleRenderer::keepWidths(Plan &plan, bool fresh) {
  if (plan.count > m_widthCount) {
    auto *widths = static_cast<int *>(
        framework::Memory::StaticAlloc(static_cast<std::size_t>(plan.count) * sizeof(int)));
    if (!widths) {
      outOfMemory("column widths");
      return false;
    }
    for (int i = 0; i < plan.count; ++i)
      widths[i] = i < m_widthCount && !fresh ? m_widths[i] : 0;
    framework::Memory::StaticFree(m_widths);
    m_widths = widths;
    m_widthCount = plan.count;
  }
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    m_widths[i] = std::max(fresh ? 0 : m_widths[i], columnWidth(*col.desc));
    col.width = m_widths[i];
  }
  return true;
}

// The end of a top-level table: its closing rule, and the blank line
// before the next table when \p more.
void ConsoleRenderer::closeTable(bool more) {
  const Level &level = m_levels[0];
  if (level.layout == QEL_FORMAT_ROWS)
    putRun(screenWidth <= level.rule ? screenWidth - 1 : level.rule, '-');
  if (more)
    putChar('\n');
  m_closing = false;
}

void ConsoleRenderer::endChain(QEL_DESC *, int) {
  if (paged() && depth() == 0 && m_closing)
    closeTable(false);
}

// The header line and its rule; returns the rule's length. A heading longer
// than its width-tracking column widens the column for the rows.
int ConsoleRenderer::printHeader(Plan &plan, int indent) {
  int pos = 0, longest = 0;
  pad(indent);
  for (int i = 0; i < plan.count; ++i) {
    Column &col = plan.columns[i];
    _QEL_COLUMN_DESC &c = *col.desc;
    if (!c.pProperty || c.pProperty->type == COLTYPE_QEL || c.print != 1)
      continue;
    const Text name = plan.text(col.fixed[1]);
    int len = std::min(name.size, kHeaderScratch);
    int padding;
    if (c.pProperty->trackWidth) {
      if (c.width > len) {
        padding = c.width - len + 1;
        len = c.width;
      } else {
        c.width = static_cast<std::uint8_t>(len);
        padding = 1;
      }
    } else if (c.pProperty->size > len) {
      padding = c.pProperty->size - len + 1;
      len = c.pProperty->size;
    } else {
      padding = 1;
    }
    if (pos + len >= screenWidth) {
      longest = std::max(longest, pos);
      pos = 2;
      putChar('\n');
      pad(2);
    }
    // The cell is cut where its scratch would have ended.
    const int shown = std::min(name.size, kHeaderScratch);
    put(name.data, shown);
    pad(std::min(padding, kHeaderScratch - shown));
    pos += len + 1;
  }
  longest = std::max(longest, pos);
  putChar('\n');
  pad(indent);
  putRun(longest + indent < screenWidth ? longest : screenWidth - indent - 1, '-');
  putChar('\n');
  replan(plan); // widened columns
  return longest;
}

void ConsoleRenderer::beginRow(Plan &plan, int row, int, int indent) {
  Level &level = m_levels[depth()];
  level.pos = 0;
  level.open = false;
  switch (level.layout) {
  case QEL_FORMAT_ROWS:
    pad(indent);
    break;
  case QEL_FORMAT_PAIRS: {
    if (utility::Debug::isDebugOn(kRowTrace)) {
      framework::Logger::StaticLogMethod(3, kPrintTable, kRowLine, "row[%d]", row);
      if (row > 0)
        framework::Logger::StaticLogMethod(3, kPrintTable, kNewEntryLine, "NEW ENTRY");
    }
    if (row > 0)
      putChar('\n');
    if (plan.desc->nameId != tGSnone) {
      const Text title = plan.text(plan.table[0]);
      pad(indent);
      put(title);
      putChar('\n');
      pad(indent);
      putRun(title.size, '-');
      putChar('\n');
    }
    break;
  }
  case QEL_FORMAT_PACKED:
  case QEL_FORMAT_STATUS:
    pad(indent);
    break;
  default:
    break;
  }
}

void ConsoleRenderer::cell(Plan &plan, const Column &col, Text value, const char *, bool,
                           int indent) {
  Level &level = m_levels[depth()];
  switch (level.layout) {
  case QEL_FORMAT_ROWS:
  case QEL_FORMAT_EMBEDDED_ROWS: {
    const int width = col.width;
    if (level.pos + width >= screenWidth) {
      level.pos = 2;
      put("\n  ");
    }
    put(value);
    const int padding = width - value.size + 1;
    if (padding > 0 && col.index + 1 < plan.desc->numColumns)
      pad(padding);
    level.pos += width + 1;
    break;
  }
  case QEL_FORMAT_PAIRS:
    pad(indent);
    put(plan.text(col.fixed[0]));
    put(": ");
    put(value);
    putChar('\n');
    break;
  case QEL_FORMAT_PACKED:
    put(value);
    putChar(' ');
    break;
  case QEL_FORMAT_STATUS:
    put(value);
    if (col.index == 0)
      put(": ");
    break;
  case QEL_FORMAT_LABELED:
    if (!level.open) {
      pad(indent);
      put(plan.text(plan.table[1]));
      put(" [");
      level.open = true;
    }
    put(plan.text(col.fixed[0]));
    put(" (");
    put(value);
    put(") ");
    break;
  }
}

void ConsoleRenderer::nestedCell(Plan &plan, const Column &col, QEL_DESC *nested, int indent) {
  Level &level = m_levels[depth()];
  switch (level.layout) {
  case QEL_FORMAT_ROWS:
  case QEL_FORMAT_EMBEDDED_ROWS:
    if (nested) {
      if (level.layout == QEL_FORMAT_ROWS)
        put("\n\n");
      walk(nested, objectId, indent + 3);
    }
    break;
  case QEL_FORMAT_PAIRS:
    if (nested) {
      putChar('\n');
      walk(nested, objectId, indent + 2);
    }
    putChar('\n');
    break;
  case QEL_FORMAT_LABELED:
    if (level.open) {
      put("] ");
      if (nested) {
        put(plan.text(col.fixed[0]));
        put(":\n");
      }
      level.open = false;
    }
    if (nested) {
      putChar('\n');
      walk(nested, objectId, indent + 3);
    }
    break;
  default: // packed, status
    if (nested) {
      putChar('\n');
      walk(nested, objectId, indent + 3);
    }
    break;
  }
}

void ConsoleRenderer::endRow(Plan &, int, int) {
  if (m_levels[depth()].layout != QEL_FORMAT_PAIRS)
    putChar('\n');
}

void ConsoleRenderer::endTable(Plan &plan, int indent) {
  if (paged() && depth() == 0) {
    // The table may go on in the next page: the rule waits.
    plan.desc->printed = 1;
    m_closing = true;
    if (plan.desc->pNext)
      closeTable(true);
    return;
  }
  const Level &level = m_levels[depth()];
  if (indent == 0) {
    if (level.layout == QEL_FORMAT_ROWS)
      putRun(screenWidth <= level.rule ? screenWidth - 1 : level.rule, '-');
  }
  plan.desc->printed = 1;
  if (plan.desc->pNext)
    putChar('\n');
}
