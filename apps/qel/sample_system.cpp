// Fills descriptors from the sample data by column number, with the typed
// fill that each column's registered type calls for, as a command handler
// would.
#include "sample_system.h"

#include "sample_data.h"

#include <cstdio>
#include <cstring>

namespace sample {
namespace {

using services::user::Session;

// Expands the row-number patterns of a sample text ({n}, {n-4}, {n+1},
// each with an optional width and hex flag: {n:04}, {n-4:08x}) into \p out,
// always NUL-terminated and cut to \p cap - 1 bytes.
void expand(const char *text, int size, int n, char *out, int cap) {
  int o = 0;
  for (int i = 0; i < size && o < cap - 1;) {
    if (text[i] != '{' || i + 2 >= size || text[i + 1] != 'n') {
      out[o++] = text[i++];
      continue;
    }
    int j = i + 2;
    int value = n;
    if (text[j] == '+' || text[j] == '-') {
      const int sign = text[j] == '-' ? -1 : 1;
      int offset = 0;
      for (++j; j < size && text[j] >= '0' && text[j] <= '9'; ++j)
        offset = offset * 10 + (text[j] - '0');
      value += sign * offset;
    }
    int width = 0;
    bool hex = false;
    if (j < size && text[j] == ':') {
      for (++j; j < size && text[j] >= '0' && text[j] <= '9'; ++j)
        width = width * 10 + (text[j] - '0');
      if (j < size && text[j] == 'x') {
        hex = true;
        ++j;
      }
    }
    char number[24];
    std::snprintf(number, sizeof number, hex ? "%0*x" : "%0*d", width, value);
    for (const char *p = number; *p && o < cap - 1; ++p)
      out[o++] = *p;
    i = j + 1; // past the closing brace
  }
  out[o] = '\0';
}

QEL_DESC *build(Session &session, int index, int rows);

void fill(Session &session, QEL_DESC *d, const Value &v, int row, long n) {
  const PropertyMetaData *prop = d->pColumns[v.column].pProperty;
  const ColumnDataType type = prop->type;
  Session *s = &session;
  // Texts longer than any column of the catalogue are cut here; the
  // generator keeps sample texts within their columns anyway.
  char text[512];
  if (v.text && type != COLTYPE_HEX_STRING)
    expand(v.text, v.size, static_cast<int>(n), text, sizeof text);
  switch (type) {
  case COLTYPE_HEX8: QEL_FillColumnHex8(s, d, v.column, row, static_cast<std::uint8_t>(v.number)); break;
  case COLTYPE_HEX32: QEL_FillColumnHex32(s, d, v.column, row, v.number); break;
  case COLTYPE_U8: QEL_FillColumnU8(s, d, v.column, row, static_cast<std::uint8_t>(v.number)); break;
  case COLTYPE_U16: QEL_FillColumnU16(s, d, v.column, row, static_cast<std::uint16_t>(v.number)); break;
  case COLTYPE_U32: QEL_FillColumnU32(s, d, v.column, row, v.number); break;
  case COLTYPE_I32: QEL_FillColumnI32(s, d, v.column, row, static_cast<std::int32_t>(v.number)); break;
  case COLTYPE_INDEX: QEL_FillColumnIndex(s, d, v.column, row, v.number); break;
  case COLTYPE_DOUBLE: QEL_FillColumnDouble(s, d, v.column, row, v.number); break;
  case COLTYPE_ENUM: QEL_FillColumnEnum(s, d, v.column, row, v.number); break;
  case COLTYPE_ENUMTOKEN: QEL_FillColumnEnumToken(s, d, v.column, row, v.number); break;
  case COLTYPE_DATETIME: QEL_FillColumnDateTime(s, d, v.column, row, v.number); break;
  case COLTYPE_TIME: QEL_FillColumnTime(s, d, v.column, row, v.number); break;
  case COLTYPE_STRING: QEL_FillColumnString(s, d, v.column, row, text); break;
  case COLTYPE_U64: QEL_FillColumnU64(s, d, v.column, row, text); break;
  case COLTYPE_BLOCKS: QEL_FillColumnBlocks(s, d, v.column, row, text); break;
  case COLTYPE_BLOCKS2BYTES: QEL_FillColumnBlocks2Bytes(s, d, v.column, row, text); break;
  case COLTYPE_STRING_N:
  case COLTYPE_HEX_STRING: {
    // Both copy exactly the column's size in bytes: pad the value with NULs.
    unsigned char bytes[256] = {};
    const int size = prop->size > 0 && prop->size < 256 ? prop->size : 255;
    if (type == COLTYPE_STRING_N)
      std::memcpy(bytes, text, std::strlen(text) < static_cast<size_t>(size) ? std::strlen(text) : size);
    else
      std::memcpy(bytes, v.text, v.size < size ? v.size : size);
    if (type == COLTYPE_STRING_N)
      QEL_FillColumnStringN(s, d, v.column, row, reinterpret_cast<const char *>(bytes));
    else
      QEL_FillColumnHexString(s, d, v.column, row, bytes);
    break;
  }
  case COLTYPE_QEL:
    // Each cell owns its nested descriptor: build a fresh one every time.
    QEL_FillColumnQEL(s, d, v.column, row, v.object >= 0 ? build(session, v.object, -1) : nullptr);
    break;
  default:
    break;
  }
}

// Rows first .. first + count - 1 of table \p index: row r repeats sample
// row r % t.rows, numbered r + 1; the values are stored row by row.
QEL_DESC *buildRows(Session &session, int index, long first, int count) {
  const Table &t = tables[index];
  QEL_DESC *d = QEL_Create(&session, strings::GS.toToken(t.basetype), tGSnone, count, t.layout);
  if (!d || t.rows == 0)
    return d;
  // The values are sorted by sample row: find the first page row's, then
  // go on from there.
  int start = 0;
  while (start < t.valueCount && t.values[start].row < first % t.rows)
    ++start;
  for (int r = 0; r < count; ++r) {
    const int sampleRow = static_cast<int>((first + r) % t.rows);
    if (sampleRow == 0)
      start = 0;
    int i = start;
    for (; i < t.valueCount && t.values[i].row == sampleRow; ++i)
      fill(session, d, t.values[i], r, first + r + 1);
    start = i;
  }
  return d;
}

QEL_DESC *build(Session &session, int index, int rows) {
  const Table &t = tables[index];
  return buildRows(session, index, 0, t.scalable && rows >= 0 ? rows : t.rows);
}

} // namespace

int findShown(const char *basetype) {
  for (int i = 0; i < tableCount; ++i)
    if (tables[i].shown && std::strcmp(tables[i].basetype, basetype) == 0)
      return i;
  return -1;
}

bool isScalable(int index) { return index >= 0 && index < tableCount && tables[index].scalable; }

QEL_DESC *buildShow(Session &session, int index, int scaleRows, int layout) {
  QEL_DESC *head = build(session, index, scaleRows);
  if (!head)
    return nullptr;
  if (layout >= 0)
    head->consoleFormat = static_cast<std::uint8_t>(layout);
  if (QEL_DESC *trailer = buildTrailer(session, index))
    QEL_link(head, trailer);
  return head;
}

QEL_DESC *buildPage(Session &session, int index, long first, int count, int layout) {
  QEL_DESC *page = buildRows(session, index, first, count);
  if (page && layout >= 0)
    page->consoleFormat = static_cast<std::uint8_t>(layout);
  return page;
}

QEL_DESC *buildTrailer(Session &session, int index) {
  QEL_DESC *head = nullptr;
  auto add = [&head](QEL_DESC *d) {
    if (!d)
      return;
    if (head)
      QEL_link(head, d);
    else
      head = d;
  };
  const Table &t = tables[index];
  for (int i = 0; i < t.linkCount; ++i)
    add(build(session, t.links[i], -1));
  // Every command ends with its completion status, as the CLI reports it.
  if (std::strcmp(t.basetype, "status") != 0)
    for (int i = 0; i < tableCount; ++i)
      if (!tables[i].shown && std::strcmp(tables[i].name, "command-status") == 0) {
        add(build(session, i, -1));
        break;
      }
  return head;
}

} // namespace sample
