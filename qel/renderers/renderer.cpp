// Renderer base: session settings, the walk over a chain, the column plan,
// cell texts, XML escaping and the output buffer.
//
// Per print of a descriptor the walk makes a plan: every column's type,
// limits and the constant texts the renderer writes around its values (an
// XML start tag up to the value, a console heading). Per cell only the value
// is formatted and appended, with no registry or dictionary lookup and no
// printf. Plans are kept per nesting level and reused while the next
// descriptor has the same table and column descriptors, so nested tables of
// one kind cost one plan per print.
#include <qel/renderers/renderer.h>

#include <qel/internal.h>

#include <qel/platform/framework.h>
#include <qel/platform/helpers.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

// The settings a renderer takes from a session (or the defaults).
struct Settings {
  services::user::Preferences::StorageUnit units;
  std::int32_t base;
  std::uint8_t precision;
  services::user::Preferences::OutputType format;
  LocaleCode locale;
  std::int32_t width;
};

Settings settingsOf(services::user::Session *session) {
  if (!session)
    return {services::user::Preferences::UNITS_AUTO, 10, 2,
            services::user::Preferences::OUTPUT_API, LOCALE_EN, 80};
  const services::user::Preferences &p = session->getPreferences();
  int width = session->getContext().getScreenWidth();
  return {p.getStorageSizeUnits(), p.getStorageSizeBase(), p.getStorageSizePrecision(),
          p.getOutputFormat(),      p.getLocale(),
          width < 1 ? 80 : width};
}

// White space as isspace() has it in the C locale, without the call.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isJson(services::user::Preferences::OutputType type) {
  return type == services::user::Preferences::OUTPUT_JSON ||
         type == services::user::Preferences::OUTPUT_JSON_ALT;
}

bool isNumericType(ColumnDataType type) {
  switch (type) {
  case COLTYPE_ENUM:
  case COLTYPE_ENUMTOKEN:
  case COLTYPE_DATETIME:
  case COLTYPE_TIME:
  case COLTYPE_BLOCKS:
  case COLTYPE_BLOCKS2BYTES:
    return true;
  default:
    return false;
  }
}

// atoll without the C library: leading white space, a sign, digits;
// saturated at the 64-bit limits as strtoll saturates.
long long parseLongLong(const char *text) {
  while (isSpace(*text))
    ++text;
  bool negative = false;
  if (*text == '+' || *text == '-')
    negative = *text++ == '-';
  unsigned long long value = 0;
  const unsigned long long limit =
      negative ? static_cast<unsigned long long>(LLONG_MAX) + 1 : LLONG_MAX;
  bool overflow = false;
  for (; *text >= '0' && *text <= '9'; ++text) {
    const unsigned digit = static_cast<unsigned>(*text - '0');
    if (value > (limit - digit) / 10)
      overflow = true;
    else
      value = value * 10 + digit;
  }
  if (overflow)
    return negative ? LLONG_MIN : LLONG_MAX;
  return negative ? static_cast<long long>(0 - value) : static_cast<long long>(value);
}

// Escaping. Each byte of a text is one of: a plain byte copied as it is, a
// special written as its escape, a control character XML does not allow
// (dropped), or the start of a multi-byte UTF-8 sequence (checked; an invalid
// one becomes U+FFFD). XML escapes its five specials as entities; JSON its
// quote, backslash and every C0 control character; a quoted CSV field doubles
// its quotes.
enum ByteClass : unsigned char { kPlain, kSpecial, kDrop, kMulti };
enum class Escape { Xml, Json, Csv };

constexpr ByteClass classOf(unsigned c, Escape e) {
  if (c >= 0x80)
    return kMulti;
  if (e == Escape::Json)
    return c == '"' || c == '\\' || c < 0x20 ? kSpecial : kPlain;
  if (e == Escape::Csv)
    return c == '"' ? kSpecial : kPlain;
  return c == '"' || c == '&' || c == '\'' || c == '<' || c == '>' ? kSpecial
         : c == '\t' || c == '\n' || c == '\r'                     ? kPlain
         : c < 0x20                                                 ? kDrop
                                                                    : kPlain;
}

struct ByteClasses {
  ByteClass of[256];
  constexpr explicit ByteClasses(Escape e) : of() {
    for (unsigned c = 0; c < 256; ++c)
      of[c] = classOf(c, e);
  }
};
constexpr ByteClasses kXmlClasses(Escape::Xml);
constexpr ByteClasses kJsonClasses(Escape::Json);
constexpr ByteClasses kCsvClasses(Escape::Csv);

const char *entityOf(char c) {
  switch (c) {
  case '"':
    return "&quot;";
  case '&':
    return "&amp;";
  case '\'':
    return "&apos;";
  case '<':
    return "&lt;";
  default:
    return "&gt;";
  }
}

// The JSON escape of a special byte, in \p buf (at least 6 bytes); its length.
int jsonEscapeOf(unsigned char c, char *buf) {
  static const char kHex[] = "0123456789abcdef";
  buf[0] = '\\';
  switch (c) {
  case '"':
  case '\\':
    buf[1] = static_cast<char>(c);
    return 2;
  case '\n':
    buf[1] = 'n';
    return 2;
  case '\r':
    buf[1] = 'r';
    return 2;
  case '\t':
    buf[1] = 't';
    return 2;
  case '\b':
    buf[1] = 'b';
    return 2;
  case '\f':
    buf[1] = 'f';
    return 2;
  default:
    std::memcpy(buf + 1, "u00", 3);
    buf[4] = kHex[c >> 4];
    buf[5] = kHex[c & 0xf];
    return 6;
  }
}

// Length of the valid UTF-8 sequence at p (at most n bytes), or 0 when the
// bytes there are not one XML may hold (bad encoding, surrogate, U+FFFE,
// U+FFFF).
int validSequence(const unsigned char *p, std::size_t n) {
  const unsigned c = p[0];
  auto cont = [&](std::size_t i) { return i < n && (p[i] & 0xC0) == 0x80; };
  if (c >= 0xC2 && c <= 0xDF)
    return cont(1) ? 2 : 0;
  if (c >= 0xE0 && c <= 0xEF) {
    if (!cont(1) || !cont(2))
      return 0;
    if ((c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] > 0x9F))
      return 0;
    if (c == 0xEF && p[1] == 0xBF && (p[2] == 0xBE || p[2] == 0xBF))
      return 0;
    return 3;
  }
  if (c >= 0xF0 && c <= 0xF4) {
    if (!cont(1) || !cont(2) || !cont(3))
      return 0;
    if ((c == 0xF0 && p[1] < 0x90) || (c == 0xF4 && p[1] > 0x8F))
      return 0;
    return 4;
  }
  return 0;
}

const char kReplacement[] = "\xEF\xBF\xBD"; // U+FFFD

// Writes \p text (n bytes) escaped in form \p e through \p write(data, size).
// Runs of plain bytes go out whole.
template <typename Write>
void escapeText(Escape e, const char *text, std::size_t n, Write write) {
  const ByteClasses &classes =
      e == Escape::Xml ? kXmlClasses : e == Escape::Json ? kJsonClasses : kCsvClasses;
  const auto *p = reinterpret_cast<const unsigned char *>(text);
  std::size_t run = 0, i = 0;
  while (i < n) {
    const ByteClass k = classes.of[p[i]];
    if (k == kPlain) {
      ++i;
      continue;
    }
    if (k == kMulti) {
      const int len = validSequence(p + i, n - i);
      if (len > 0) {
        i += static_cast<std::size_t>(len);
        continue;
      }
    }
    write(text + run, i - run);
    if (k == kSpecial) {
      if (e == Escape::Xml) {
        write(entityOf(text[i]), std::strlen(entityOf(text[i])));
      } else if (e == Escape::Json) {
        char buf[8];
        write(buf, static_cast<std::size_t>(jsonEscapeOf(p[i], buf)));
      } else {
        write("\"\"", 2);
      }
    } else if (k == kMulti) {
      write(kReplacement, 3);
    }
    ++i;
    run = i;
  }
  write(text + run, n - run);
}

template <typename Write> void escapeXml(const char *text, std::size_t n, Write write) {
  escapeText(Escape::Xml, text, n, write);
}

} // namespace

// --- Construction -----------------------------------------------------------

Renderer::Renderer(services::user::Session *session)
    : Renderer(session, session ? &session->getOutputStream() : nullptr, true) {}

Renderer::Renderer(services::user::Session *session, utility::PutStream &stream)
    : Renderer(session, &stream, true) {}

Renderer::Renderer(services::user::Session *session, utility::PutStream *stream, bool)
    : outputStream(stream), objectId(0) {
  if (!session && !stream)
    framework::Logger::StaticLog(0, "Renderer: no session");
  Settings s = settingsOf(session);
  storageSizeUnits = s.units;
  storageSizeBase = s.base;
  storageSizePrecision = s.precision;
  outputFormat = s.format;
  locale = s.locale;
  screenWidth = s.width;
  m_notAvailable = mc_gettext("N/A");
}

Renderer::Renderer(utility::PutStream &stream) : Renderer(nullptr, &stream, true) {}

Renderer::~Renderer() {
  if (m_holding)
    release(nullptr);
  flush();
  framework::Memory::StaticFree(m_held);
  for (Plan &p : m_plans) {
    framework::Memory::StaticFree(p.columns);
    framework::Memory::StaticFree(p.bytes);
    framework::Memory::StaticFree(p.snapshot);
  }
}

bool Renderer::isNumericColumn(QEL_DESC *desc, int column) {
  return isNumericType(getColumnType(desc->tableId, column));
}

// --- Output -----------------------------------------------------------------

void Renderer::flush() {
  if (m_used > 0)
    deliver(m_buffer, m_used);
  m_used = 0;
}

// Hands bytes on: to the output stream, or to the kept output while a row
// is held. When the kept output cannot grow, the print stops and what was
// kept goes out without its insert.
void Renderer::deliver(const char *data, int size) {
  if (m_holding) {
    if (m_heldSize + size > m_heldCapacity) {
      const int grown = std::max(m_heldCapacity * 2, m_heldSize + size + 4096);
      auto *held = static_cast<char *>(framework::Memory::StaticAlloc(static_cast<std::size_t>(grown)));
      if (!held) {
        outOfMemory("a held row");
        m_holding = false;
        if (outputStream && m_heldSize > 0)
          outputStream->PutB(m_held, m_heldSize);
        m_heldSize = 0;
      } else {
        if (m_heldSize > 0)
          std::memcpy(held, m_held, static_cast<std::size_t>(m_heldSize));
        framework::Memory::StaticFree(m_held);
        m_held = held;
        m_heldCapacity = grown;
      }
    }
    if (m_holding) {
      std::memcpy(m_held + m_heldSize, data, static_cast<std::size_t>(size));
      m_heldSize += size;
      return;
    }
  }
  if (outputStream)
    outputStream->PutB(data, size);
}

void Renderer::hold() {
  flush(); // what comes before the mark goes out now
  m_holding = true;
}

void Renderer::release(const char *insert) {
  flush();
  if (!m_holding)
    return; // keeping failed, and what was kept went out then
  m_holding = false;
  if (insert)
    deliver(insert, static_cast<int>(std::strlen(insert)));
  if (m_heldSize > 0)
    deliver(m_held, m_heldSize);
  m_heldSize = 0;
}

void Renderer::putSlow(const char *data, int size) {
  flush();
  if (size > kBufferSize) {
    deliver(data, size);
    return;
  }
  std::memcpy(m_buffer, data, static_cast<std::size_t>(size));
  m_used = size;
}

void Renderer::putInt(long long value) {
  char digits[24];
  put(digits, static_cast<int>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
}

void Renderer::putRun(int count, char c) {
  while (count > 0) {
    if (m_used == kBufferSize)
      flush();
    const int chunk = std::min(count, kBufferSize - m_used);
    std::memset(m_buffer + m_used, c, static_cast<std::size_t>(chunk));
    m_used += chunk;
    count -= chunk;
  }
}


void Renderer::putXml(Text value) {
  escapeXml(value.data, static_cast<std::size_t>(value.size),
            [this](const char *data, std::size_t size) { put(data, static_cast<int>(size)); });
}

void Renderer::putJson(Text value) {
  escapeText(Escape::Json, value.data, static_cast<std::size_t>(value.size),
             [this](const char *data, std::size_t size) { put(data, static_cast<int>(size)); });
}

void Renderer::putCsv(Text value, char delimiter) {
  const bool quoted = std::any_of(value.data, value.data + value.size, [delimiter](char c) {
    return c == delimiter || c == '"' || c == '\n' || c == '\r';
  });
  if (quoted)
    putChar('"');
  escapeText(Escape::Csv, value.data, static_cast<std::size_t>(value.size),
             [this](const char *data, std::size_t size) { put(data, static_cast<int>(size)); });
  if (quoted)
    putChar('"');
}

bool Renderer::numberText(ColumnDataType type) {
  switch (type) {
  case COLTYPE_U8:
  case COLTYPE_U16:
  case COLTYPE_U32:
  case COLTYPE_I32:
  case COLTYPE_INDEX:
  case COLTYPE_U64:
  case COLTYPE_DOUBLE:
    return true;
  default:
    return false;
  }
}

void Renderer::beginDocument(const DocumentOptions &) {}
void Renderer::endDocument() {}

void Renderer::convertBuffer(utility::PutStream &out, const char *text) {
  if (!text)
    return;
  escapeXml(text, std::strlen(text), [&out](const char *data, std::size_t size) {
    out.PutB(data, static_cast<int>(size));
  });
}

std::string Renderer::xmlEscaped(const char *text) {
  std::string out;
  if (text)
    escapeXml(text, std::strlen(text),
              [&out](const char *data, std::size_t size) { out.append(data, size); });
  return out;
}

void Renderer::outOfMemory(const char *what) {
  if (!m_failed)
    framework::Logger::StaticLog(0, "Renderer: out of memory for %s; the print is incomplete",
                                 what);
  m_failed = true;
}

// --- Plans ------------------------------------------------------------------

bool Renderer::addText(Plan &plan, Span &slot, const char *text, int size) {
  if (plan.used + size > plan.size) {
    const int grown = std::max(plan.size * 2, plan.used + size + 256);
    auto *bytes = static_cast<char *>(framework::Memory::StaticAlloc(static_cast<std::size_t>(grown)));
    if (!bytes) {
      outOfMemory("a column plan");
      return false;
    }
    if (plan.used > 0)
      std::memcpy(bytes, plan.bytes, static_cast<std::size_t>(plan.used));
    framework::Memory::StaticFree(plan.bytes);
    plan.bytes = bytes;
    plan.size = grown;
  }
  if (text && size > 0)
    std::memcpy(plan.bytes + plan.used, text, static_cast<std::size_t>(size));
  slot = {plan.used, size};
  plan.used += size;
  return true;
}

bool Renderer::addText(Plan &plan, Span &slot, const char *text) {
  return addText(plan, slot, text, text ? static_cast<int>(std::strlen(text)) : 0);
}

bool Renderer::fillPlan(Plan &plan, QEL_DESC *desc) {
  const int n = std::max(desc->numColumns, 0);
  if (n > plan.capacity) {
    framework::Memory::StaticFree(plan.columns);
    framework::Memory::StaticFree(plan.snapshot);
    plan.columns = static_cast<Column *>(
        framework::Memory::StaticAlloc(static_cast<std::size_t>(n) * sizeof(Column)));
    plan.snapshot = static_cast<_QEL_COLUMN_DESC *>(
        framework::Memory::StaticAlloc(static_cast<std::size_t>(n) * sizeof(_QEL_COLUMN_DESC)));
    plan.capacity = plan.columns && plan.snapshot ? n : 0;
    if (plan.capacity == 0) {
      outOfMemory("a column plan");
      return false;
    }
  }
  plan.desc = desc;
  plan.count = n;
  plan.used = 0;
  plan.tableId = desc->tableId;
  plan.nameId = desc->nameId;
  plan.consoleFormat = desc->consoleFormat;
  if (n > 0)
    std::memcpy(plan.snapshot, desc->pColumns, static_cast<std::size_t>(n) * sizeof(_QEL_COLUMN_DESC));
  for (Span &s : plan.table)
    s = {0, 0};
  for (int c = 0; c < n; ++c) {
    Column &col = plan.columns[c];
    col = Column{};
    col.index = c;
    col.type = qel_detail::columnType(desc, c);
    col.desc = &desc->pColumns[c];
    col.property = col.desc->pProperty;
    col.companion = isNumericType(col.type);
    col.limit = 7000;
    col.decodedOffset = -1;
    for (std::int64_t &v : col.decodedValue)
      v = -1;
    const bool decoded = (col.type == COLTYPE_ENUM || col.type == COLTYPE_ENUMTOKEN) &&
                         col.property && col.property->decoder;
    Span cache{};
    if (decoded) {
      if (!addText(plan, cache, nullptr, kDecoded * kDecodedBytes))
        return false;
      col.decodedOffset = cache.offset;
    }
  }
  try {
    planTable(plan);
  } catch (...) { // the renderer's texts are built with the standard library
    outOfMemory("a column plan");
  }
  return !m_failed;
}

Renderer::Plan *Renderer::planFor(QEL_DESC *desc) {
  Plan &plan = m_plans[m_depth];
  const int n = std::max(desc->numColumns, 0);
  if (plan.capacity > 0 && plan.tableId == desc->tableId && plan.nameId == desc->nameId &&
      plan.count == n &&
      (n == 0 || std::memcmp(plan.snapshot, desc->pColumns,
                             static_cast<std::size_t>(n) * sizeof(_QEL_COLUMN_DESC)) == 0) &&
      plan.consoleFormat == desc->consoleFormat) {
    plan.desc = desc;
    for (int c = 0; c < n; ++c)
      plan.columns[c].desc = &desc->pColumns[c];
    return &plan;
  }
  return fillPlan(plan, desc) ? &plan : nullptr;
}

void Renderer::replan(Plan &plan) {
  if (plan.count > 0)
    std::memcpy(plan.snapshot, plan.desc->pColumns,
                static_cast<std::size_t>(plan.count) * sizeof(_QEL_COLUMN_DESC));
}

// --- The walk ---------------------------------------------------------------

void Renderer::beginChain(QEL_DESC *, int) {}
void Renderer::endChain(QEL_DESC *, int) {}
bool Renderer::beginTable(Plan &, int, int) { return true; }
void Renderer::endTable(Plan &, int) {}
bool Renderer::visits(const Column &) const { return true; }


void Renderer::documentTo(utility::PutStream &stream, const DocumentOptions *options) {
  flush();
  utility::PutStream *tables = outputStream;
  outputStream = &stream;
  if (options)
    beginDocument(*options);
  else
    endDocument();
  flush();
  outputStream = tables;
}

void Renderer::PrintTable(QEL_DESC *desc, int parentOid, int indent) {
  Call call(*this);
  if (desc)
    walk(desc, parentOid, indent);
}

bool Renderer::PrintPage(QEL_DESC *head) {
  Call call(*this);
  m_paged = true;
  // A descriptor refilled for the next page is printed again.
  for (QEL_DESC *d = head; d; d = d->pNext)
    d->printed = 0;
  return head ? walk(head, 0, 0) : !m_failed;
}

void Renderer::endPages() {
  Call call(*this);
  if (m_holding)
    release(nullptr);
  if (!m_chainOpen)
    return;
  m_chainOpen = false;
  m_continues = false;
  m_rowsBefore = 0;
  ++m_depth;
  endChain(reinterpret_cast<QEL_DESC *>(m_head), 0);
  --m_depth;
}

bool Renderer::walk(QEL_DESC *head, int parentOid, int indent) {
  if (m_failed || !outputStream)
    return false;
  if (m_depth >= kMaxDepth) {
    if (!m_tooDeep)
      framework::Logger::StaticLog(
          0, "Renderer: nested tables deeper than %d levels are not printed", kMaxDepth);
    m_tooDeep = true;
    return true;
  }
  struct Level {
    int &depth;
    explicit Level(int &d) : depth(d) { ++depth; }
    ~Level() { --depth; }
  } level(m_depth);
  if (outputStream)
    outputStream->setSilentTruncation(true);

  // The pages of a paged print are one top-level chain.
  const bool top = m_paged && m_depth == 0;
  if (!top || !m_chainOpen)
    beginChain(head, indent);
  if (top && !m_chainOpen) {
    std::memcpy(m_head, static_cast<const void *>(head), sizeof m_head);
    m_chainOpen = true;
  }
  for (QEL_DESC *d = head; d; d = d->pNext) {
    Plan *plan = planFor(d);
    if (!plan)
      return false;
    if (top) {
      const auto *last = reinterpret_cast<const QEL_DESC *>(m_last);
      m_continues = d == head && m_lastValid && last->tableId == d->tableId &&
                    last->nameId == d->nameId && last->consoleFormat == d->consoleFormat &&
                    last->numColumns == d->numColumns;
      m_rowsBefore = m_continues ? m_lastRows : 0;
    }
    if (!beginTable(*plan, parentOid, indent))
      continue;
    const int before = top ? m_rowsBefore : 0;
    int *order = nullptr;
    if (d->numRows > 1 && !top && sortsRows(*plan)) {
      order = static_cast<int *>(
          framework::Memory::StaticAlloc(static_cast<std::size_t>(d->numRows) * sizeof(int)));
      if (!order) {
        orderFailed();
        return true;
      }
      SORTOutput(d, order);
    }
    char units[20];
    for (int p = 0; p < d->numRows && !m_failed; ++p) {
      const int row = order ? order[p] : p;
      beginRow(*plan, row + before, p + before, indent);
      const QEL_CELL *cells = &qel_detail::cellAt(d, row, 0);
      for (int i = 0; i < plan->count; ++i) {
        Column &col = plan->columns[i];
        if (!visits(col))
          continue;
        const QEL_CELL value = cells[col.index];
        if (col.type == COLTYPE_QEL) {
          nestedCell(*plan, col, reinterpret_cast<QEL_DESC *>(value), indent);
          continue;
        }
        cell(*plan, col, cellText(*plan, col, value, false, units), units, false, indent);
        if (col.companion)
          cell(*plan, col, cellText(*plan, col, value, true, units), units, true, indent);
      }
      endRow(*plan, row + before, indent);
    }
    framework::Memory::StaticFree(order);
    if (m_failed)
      return false;
    endTable(*plan, indent);
    if (top) {
      std::memcpy(m_last, static_cast<const void *>(d), sizeof m_last);
      m_lastValid = true;
      // Row numbers stop growing at INT_MAX / 2 (a billion rows), so that a
      // page's own rows never overflow them.
      m_lastRows = static_cast<int>(
          std::min<long long>(static_cast<long long>(before) + d->numRows, INT_MAX / 2));
      m_continues = false;
    }
  }
  if (!top)
    endChain(head, indent);
  return !m_failed;
}

// --- Cell texts -------------------------------------------------------------

Renderer::Text Renderer::decode(Plan &plan, Column &col, std::uint32_t value) {
  const int slot = static_cast<int>(value % kDecoded);
  if (col.decodedOffset >= 0 && col.decodedValue[slot] == value)
    return {plan.bytes + col.decodedOffset + slot * kDecodedBytes, col.decodedSize[slot]};
  qel_detail::ScratchStream<7200> out;
  out.setSilentTruncation(true);
  col.property->decoder(out, value);
  const int size = out.ReadAvailable();
  std::memcpy(m_scratch, out.pTail(), static_cast<std::size_t>(size));
  if (col.decodedOffset >= 0 && size <= kDecodedBytes) {
    std::memcpy(plan.bytes + col.decodedOffset + slot * kDecodedBytes, m_scratch,
                static_cast<std::size_t>(size));
    col.decodedValue[slot] = value;
    col.decodedSize[slot] = size;
  }
  return {m_scratch, size};
}

Renderer::Text Renderer::storageSize(const char *text, char *units) {
  if (!text || std::strcmp(text, "N/A") == 0 || std::strcmp(text, m_notAvailable) == 0)
    return {m_notAvailable, static_cast<int>(std::strlen(m_notAvailable))};
  const std::uint64_t bytes = static_cast<std::uint64_t>(parseLongLong(text)) * 512u;
  const int n = formatSize(bytes, storageSizeUnits, storageSizePrecision, storageSizeBase,
                           m_scratch, units);
  const int u = static_cast<int>(std::strlen(units));
  std::memcpy(m_scratch + n, units, static_cast<std::size_t>(u));
  return {m_scratch, n + u};
}

Renderer::Text Renderer::cellText(Plan &plan, Column &col, QEL_CELL cell, bool numericForm,
                                  char *units) {
  units[0] = '\0';
  const auto number = static_cast<std::uint32_t>(cell);
  const char *text = reinterpret_cast<const char *>(cell);
  char *const s = m_scratch;
  auto integer = [s](long long v) -> Text {
    return {s, static_cast<int>(std::to_chars(s, s + 24, v).ptr - s)};
  };
  auto hex = [s](std::uint32_t v, int digits) -> Text {
    static const char kDigits[] = "0123456789abcdef";
    for (int i = digits - 1; i >= 0; --i, v >>= 4)
      s[i] = kDigits[v & 0xf];
    return {s, digits};
  };
  Text t{s, 0};
  switch (col.type) {
  case COLTYPE_HEX8:
    t = hex(number & 0xffu, 2);
    break;
  case COLTYPE_HEX32:
    t = hex(number, 8);
    break;
  case COLTYPE_U8:
    t = integer(number & 0xffu);
    break;
  case COLTYPE_U16:
    t = integer(number & 0xffffu);
    break;
  case COLTYPE_U32:
  case COLTYPE_INDEX:
  case COLTYPE_I32:
    t = integer(static_cast<std::int32_t>(number));
    break;
  case COLTYPE_STRING:
  case COLTYPE_STRING_N: {
    if (!text)
      break;
    if (numericForm) {
      t = {text, static_cast<int>(std::strlen(text))};
      break;
    }
    // Stripped of leading and trailing white space. For the web script the
    // text's double quotes, backslashes and line breaks are escaped first,
    // so a line break at either end is kept (as \n).
    const bool json = isJson(outputFormat);
    auto strip = [json](char c) { return isSpace(c) && !(json && (c == '\n' || c == '\r')); };
    while (strip(*text))
      ++text;
    // One pass finds the end and, for the web script, whether anything
    // needs escaping.
    int len = 0;
    bool special = false;
    for (char c; (c = text[len]) != '\0'; ++len)
      special |= c == '"' || c == '\\' || c == '\n' || c == '\r';
    while (len > 0 && strip(text[len - 1]))
      --len;
    if (!json || !special || !std::any_of(text, text + len, [](char c) {
          return c == '"' || c == '\\' || c == '\n' || c == '\r';
        })) {
      t = {text, len};
      break;
    }
    // Escaped up to the value limit; an escape is never cut in two.
    const int limit = std::min(col.limit, 7200);
    int n = 0;
    for (int i = 0; i < len; ++i) {
      const char c = text[i];
      const char escaped = c == '"' ? '"' : c == '\\' ? '\\' : c == '\n' ? 'n' : c == '\r' ? 'r' : 0;
      if (!escaped) {
        if (n + 1 > limit)
          break;
        s[n++] = c;
      } else {
        if (n + 2 > limit)
          break;
        s[n++] = '\\';
        s[n++] = escaped;
      }
    }
    t = {s, n};
    break;
  }
  case COLTYPE_QEL:
    break; // nested tables are printed by the renderers themselves
  case COLTYPE_DOUBLE: {
    const int n = static_cast<int>(std::to_chars(s, s + 24, number).ptr - s);
    std::memcpy(s + n, ".00", 3);
    t = {s, n + 3};
    break;
  }
  case COLTYPE_ENUM:
    if (numericForm)
      t = integer(static_cast<std::int32_t>(number));
    else if (col.property && col.property->decoder)
      t = decode(plan, col, number);
    break;
  case COLTYPE_ENUMTOKEN:
    if (numericForm) {
      if (col.property && col.property->decoder)
        t = decode(plan, col, number);
    } else if (const char *keyword = strings::GS.toString(number)) {
      t = {keyword, static_cast<int>(std::strlen(keyword))};
    }
    break;
  case COLTYPE_U64:
    if (text)
      t = {text, static_cast<int>(std::strlen(text))};
    break;
  case COLTYPE_HEX_STRING: {
    // The null placeholder " " (followed by NULs up to the property's size)
    // shows blank; real bytes show as hex, size / 2 of them.
    if (!text || (text[0] == ' ' && text[1] == '\0'))
      break;
    const int n = col.property ? (col.property->size / 2) & 0xff : 0;
    HexToCharString(s, reinterpret_cast<const unsigned char *>(text), n);
    t = {s, 2 * n};
    break;
  }
  case COLTYPE_BLOCKS:
    if (!numericForm)
      t = storageSize(text, units);
    else if (text)
      t = {text, static_cast<int>(std::strlen(text))};
    break;
  case COLTYPE_BLOCKS2BYTES:
    if (!numericForm)
      t = storageSize(text, units);
    else if (text)
      t = integer(static_cast<long long>(static_cast<std::uint64_t>(parseLongLong(text)) * 512u));
    break;
  case COLTYPE_DATETIME:
  case COLTYPE_TIME:
    if (numericForm) {
      t = integer(static_cast<std::int32_t>(number));
    } else if (number == 0) {
      t = {m_notAvailable, static_cast<int>(std::strlen(m_notAvailable))};
    } else {
      // localtime_r: no result buffer shared between threads.
      std::time_t seconds = static_cast<std::time_t>(number);
      std::tm local;
      if (localtime_r(&seconds, &local))
        t.size = static_cast<int>(std::strftime(
            s, 64, col.type == COLTYPE_DATETIME ? "%Y-%m-%d %H:%M:%S" : "%H:%M:%S", &local));
    }
    break;
  default:
    break; // an unknown table: nothing
  }
  if (t.size > col.limit)
    t.size = std::max(col.limit, 0);
  return t;
}

void Renderer::FormatData(QEL_DESC *desc, int column, int row, utility::PutStream &value,
                          utility::PutStream &numeric, bool numericForm) {
  value.Rewind();
  if (!desc) {
    framework::Logger::StaticLog(0, "FormatData - pDesc is NULL\n");
    return;
  }
  if (row >= desc->maxRows) {
    framework::Logger::StaticLog(0, "FormatData - max rows exceeded\n");
    return;
  }
  if (column >= desc->maxColumns) {
    framework::Logger::StaticLog(0, "FormatData - max cols exceeded\n");
    return;
  }
  if (row < 0 || column < 0)
    return;
  Plan none;
  Column col{};
  col.index = column;
  col.type = getColumnType(desc->tableId, column);
  col.property = column < desc->numColumns ? desc->pColumns[column].pProperty : nullptr;
  col.limit = INT_MAX;
  col.decodedOffset = -1;
  char units[20];
  const Text t = cellText(none, col, qel_detail::cellAt(desc, row, column), numericForm, units);
  value.PutB(t.data, t.size);
  if (units[0]) {
    numeric.PutS("units=\"");
    numeric.PutS(units);
    numeric.PutC('"');
  }
}
