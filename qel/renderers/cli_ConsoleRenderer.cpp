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
#include <qel/renderers/cli_ConsoleRenderer.h>

#include <qel/internal.h>

#include <platform/debug.h>
#include <platform/framework.h>
#include <platform/helpers.h>

#include <cstring>

namespace {

const char kPrintTable[] = "virtual void ConsoleRenderer::PrintTable(QEL_DESC*, int, int)";
constexpr unsigned kRowTrace = 3261;

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

QEL_DESC *nestedAt(QEL_DESC *d, int row, int column) {
  return reinterpret_cast<QEL_DESC *>(qel_detail::cellAt(d, row, column));
}

bool isNested(QEL_DESC *d, int column) {
  return getColumnType(d->tableId, column) == COLTYPE_QEL;
}

} // namespace

ConsoleRenderer::ConsoleRenderer(services::user::Session *session) : Renderer(session) {}

ConsoleRenderer::ConsoleRenderer(services::user::Session *session,
                                 utility::PutStream &stream)
    : Renderer(session, stream) {}

ConsoleRenderer::~ConsoleRenderer() = default;

void ConsoleRenderer::PrintTable(QEL_DESC *desc, int, int indent) {
  if (!desc) {
    framework::Logger::StaticLogMethod(0, kPrintTable, 375, "pDesc is NULL");
    return;
  }
  outputStream->setSilentTruncation(true);
  for (QEL_DESC *d = desc; d; d = d->pNext) {
    if (d->printed)
      continue;
    char title[256] = "";
    if (d->nameId != tGSnone)
      strcpyAssert(title, label(d->nameId, static_cast<int>(d->tableId)), sizeof title);
    switch (d->consoleFormat) {
    case QEL_FORMAT_PAIRS:
      printPairs(d, title, indent);
      break;
    case QEL_FORMAT_PACKED:
      printPacked(d, indent);
      break;
    case QEL_FORMAT_LABELED:
      printLabeled(d, indent);
      break;
    case QEL_FORMAT_EMBEDDED_ROWS:
      printEmbeddedRows(d, indent);
      break;
    case QEL_FORMAT_STATUS:
      printStatus(d, indent);
      break;
    default:
      if (!printColumnTable(d, indent))
        return; // no row-order array: the rest of the chain is skipped
      break;
    }
    d->printed = 1;
    if (d->pNext)
      outputStream->PutC('\n');
  }
}

void ConsoleRenderer::printNested(QEL_DESC *d, int row, int column, int indent) {
  PrintTable(nestedAt(d, row, column), objectId, indent);
}

bool ConsoleRenderer::printColumnTable(QEL_DESC *d, int indent) {
  const int width = PrintHeader(d, indent);
  int *order = nullptr;
  if (d->numRows > 1) {
    order = static_cast<int *>(
        framework::Memory::StaticAlloc(static_cast<std::size_t>(d->numRows) * sizeof(int)));
    if (!order) {
      framework::Logger::StaticLogMethod(0, kPrintTable, 508, "malloc failed");
      return false;
    }
    SORTOutput(d, order);
  }
  for (int p = 0; p < d->numRows; ++p) {
    outputStream->Indent(indent);
    PrintRow(d, order ? order[p] : p, false, indent);
  }
  framework::Memory::StaticFree(order);
  if (indent == 0)
    outputStream->PutNChar(screenWidth <= width ? screenWidth - 1 : width, '-');
  return true;
}

int ConsoleRenderer::PrintHeader(QEL_DESC *d, int indent) {
  int pos = 0, longest = 0;
  outputStream->Indent(indent);
  for (int c = 0; c < d->numColumns; ++c) {
    _QEL_COLUMN_DESC &col = d->pColumns[c];
    if (!col.pProperty || col.pProperty->type == COLTYPE_QEL || col.print != 1)
      continue;
    Scratch &scratch = valueScratch(7000);
    const int w = FormatColumnHeader(&col, static_cast<int>(d->tableId), scratch);
    if (pos + w >= screenWidth) {
      if (pos > longest)
        longest = pos;
      pos = 2;
      outputStream->PutC('\n');
      outputStream->Indent(2);
    }
    outputStream->PutS(scratch.pTail());
    pos += w + 1;
  }
  if (pos > longest)
    longest = pos;
  outputStream->PutC('\n');
  outputStream->Indent(indent);
  outputStream->PutNChar(longest + indent < screenWidth ? longest : screenWidth - indent - 1,
                         '-');
  outputStream->PutC('\n');
  return longest;
}

int ConsoleRenderer::FormatColumnHeader(_QEL_COLUMN_DESC *column, int tableId,
                                        utility::PutStream &out) {
  const char *name = heading(column->displayId, tableId);
  const int start = out.WritePosition();
  if (column->qualifierValueId != tGSnone)
    out.PutF("%s(%s)", name, heading(column->qualifierValueId, tableId));
  else
    out.PutS(name);
  int len = out.WritePosition() - start;
  const PropertyMetaData *p = column->pProperty;
  if (p && p->trackWidth) {
    if (column->width > len) {
      out.Indent(column->width - len + 1);
      len = column->width;
    } else {
      column->width = static_cast<std::uint8_t>(len);
      out.PutC(' ');
    }
  } else {
    const int size = p ? p->size : 0;
    if (size > len) {
      out.Indent(size - len + 1);
      len = size;
    } else {
      out.PutC(' ');
    }
  }
  return len;
}

void ConsoleRenderer::PrintRow(QEL_DESC *d, int row, bool embedded, int indent) {
  outputStream->setSilentTruncation(true);
  int pos = 0;
  for (int c = 0; c < d->numColumns; ++c) {
    const _QEL_COLUMN_DESC &col = d->pColumns[c];
    if (col.print != 1)
      continue;
    if (isNested(d, c)) {
      if (nestedAt(d, row, c)) {
        if (!embedded)
          outputStream->PutS("\n\n");
        printNested(d, row, c, indent + 3);
      }
      continue;
    }
    Scratch &value = valueScratch(7000);
    FormatData(d, c, row, value, numericScratch(), false);
    const int len = value.ReadAvailable();
    const int width = columnWidth(col);
    const int pad = width - len + 1;
    if (pos + width >= screenWidth) {
      pos = 2;
      outputStream->PutS("\n  ");
    }
    outputStream->PutB(value.pTail(), len);
    if (pad > 0 && c + 1 < d->numColumns)
      outputStream->Indent(pad);
    pos += width + 1;
  }
  outputStream->PutC('\n');
}

int ConsoleRenderer::PrintEmbeddedHeader(QEL_DESC *, bool, int) { return 0; }

void ConsoleRenderer::printPairs(QEL_DESC *d, const char *title, int indent) {
  const bool trace = utility::Debug::isDebugOn(kRowTrace);
  for (int r = 0; r < d->numRows; ++r) {
    if (trace) {
      framework::Logger::StaticLogMethod(3, kPrintTable, 426, "row[%d]", r);
      if (r > 0)
        framework::Logger::StaticLogMethod(3, kPrintTable, 429, "NEW ENTRY");
    }
    if (r > 0)
      outputStream->PutC('\n');
    if (d->nameId != tGSnone) {
      outputStream->Indent(indent);
      outputStream->PutS(title);
      outputStream->PutC('\n');
      outputStream->Indent(indent);
      outputStream->PutNChar(static_cast<int>(std::strlen(title)), '-');
      outputStream->PutC('\n');
    }
    for (int c = 0; c < d->numColumns; ++c) {
      const _QEL_COLUMN_DESC &col = d->pColumns[c];
      if (col.print != 1)
        continue;
      if (!printNestedCell(d, r, c, indent + 2)) {
        outputStream->Indent(indent);
        outputStream->PutF("%s: ", label(col.displayId, static_cast<int>(d->tableId)));
        Scratch &value = valueScratch(7000);
        FormatData(d, c, r, value, numericScratch(), false);
        outputStream->PutB(value.pTail(), value.ReadAvailable());
      }
      outputStream->PutC('\n');
    }
  }
}

// A QEL column's cell: its nested table (if any) below the current line.
// False for a column of any other type, which the caller prints itself.
bool ConsoleRenderer::printNestedCell(QEL_DESC *d, int row, int column, int indent) {
  if (!isNested(d, column))
    return false;
  if (nestedAt(d, row, column)) {
    outputStream->PutC('\n');
    printNested(d, row, column, indent);
  }
  return true;
}

// Packed and status layouts: a line per row with the printed values one
// after another, nested tables below the line that holds them. Packed cuts
// each value to its column's size and follows it with a blank; status ends
// the first value with ": ".
void ConsoleRenderer::printValueLines(QEL_DESC *d, int indent, bool status) {
  for (int r = 0; r < d->numRows; ++r) {
    outputStream->Indent(indent);
    for (int c = 0; c < d->numColumns; ++c) {
      const _QEL_COLUMN_DESC &col = d->pColumns[c];
      if (col.print != 1)
        continue;
      if (printNestedCell(d, r, c, indent + 3))
        continue;
      Scratch &value = valueScratch(status ? 600 : col.pProperty ? col.pProperty->size : 0);
      FormatData(d, c, r, value, numericScratch(), false);
      outputStream->PutB(value.pTail(), value.ReadAvailable());
      if (!status)
        outputStream->PutC(' ');
      else if (c == 0)
        outputStream->PutS(": ");
    }
    outputStream->PutC('\n');
  }
}

void ConsoleRenderer::printPacked(QEL_DESC *d, int indent) { printValueLines(d, indent, false); }

void ConsoleRenderer::printLabeled(QEL_DESC *d, int indent) {
  const int tableId = static_cast<int>(d->tableId);
  for (int r = 0; r < d->numRows; ++r) {
    bool open = false;
    for (int c = 0; c < d->numColumns; ++c) {
      const _QEL_COLUMN_DESC &col = d->pColumns[c];
      if (col.print != 1)
        continue;
      if (isNested(d, c)) {
        QEL_DESC *nested = nestedAt(d, r, c);
        if (open) {
          outputStream->PutS("] ");
          if (nested) {
            outputStream->PutS(label(col.displayId, tableId));
            outputStream->PutS(":\n");
          }
          open = false;
        }
        if (!open && nested)
          outputStream->PutC('\n');
        if (nested)
          printNested(d, r, c, indent + 3);
        continue;
      }
      if (!open) {
        outputStream->Indent(indent);
        outputStream->PutS(label(d->tableId, 0));
        outputStream->PutS(" [");
        open = true;
      }
      Scratch &value = valueScratch(col.pProperty ? col.pProperty->size : 0);
      FormatData(d, c, r, value, numericScratch(), false);
      outputStream->PutS(label(col.displayId, tableId));
      outputStream->PutF(" (%s) ", value.pTail());
    }
    outputStream->PutC('\n');
  }
}

void ConsoleRenderer::printEmbeddedRows(QEL_DESC *d, int indent) {
  const int width = indent == 0 ? PrintEmbeddedHeader(d, false, 0) : 0;
  for (int r = 0; r < d->numRows; ++r)
    PrintRow(d, r, true, indent);
  if (indent == 0)
    outputStream->PutNChar(width, '-');
}

void ConsoleRenderer::printStatus(QEL_DESC *d, int indent) { printValueLines(d, indent, true); }
