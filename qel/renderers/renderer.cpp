// Renderer base: session settings, cell formatting and XML escaping.
#include <qel/renderers/renderer.h>

#include <qel/internal.h>

#include <platform/framework.h>
#include <platform/helpers.h>

#include <algorithm>
#include <cctype>
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

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

} // namespace

Renderer::Renderer(services::user::Session *session)
    : Renderer(session, session->getOutputStream()) {}

Renderer::Renderer(services::user::Session *session, utility::PutStream &stream)
    : outputStream(&stream), objectId(0) {
  Settings s = settingsOf(session);
  storageSizeUnits = s.units;
  storageSizeBase = s.base;
  storageSizePrecision = s.precision;
  outputFormat = s.format;
  locale = s.locale;
  screenWidth = s.width;
}

Renderer::Renderer(utility::PutStream &stream) : Renderer(nullptr, stream) {}

Renderer::~Renderer() { framework::Memory::StaticFree(m_escape); }

Renderer::Scratch &Renderer::Scratch::use(int size) {
  Rewind();
  capacity = std::max(0, std::min(size, m_allocated));
  setSilentTruncation(true);
  return *this;
}

bool Renderer::isNumericColumn(QEL_DESC *desc, int column) {
  switch (getColumnType(desc->tableId, column)) {
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

void Renderer::convertBuffer(utility::PutStream &out, const char *text) {
  if (!text)
    return;
  // Copy runs of ordinary bytes whole; only the five specials are replaced.
  const char *run = text;
  for (const char *p = text;; ++p) {
    const char *entity;
    switch (*p) {
    case '"':
      entity = "&quot;";
      break;
    case '&':
      entity = "&amp;";
      break;
    case '\'':
      entity = "&apos;";
      break;
    case '<':
      entity = "&lt;";
      break;
    case '>':
      entity = "&gt;";
      break;
    case '\0':
      out.PutB(run, static_cast<int>(p - run));
      return;
    default:
      continue;
    }
    out.PutB(run, static_cast<int>(p - run));
    out.PutS(entity);
    run = p + 1;
  }
}

// Text without its leading and trailing white space, written in place of a
// stripped copy.
void Renderer::writeText(const char *text, utility::PutStream &value) {
  while (isSpace(*text))
    ++text;
  std::size_t len = std::strlen(text);
  while (len > 0 && isSpace(text[len - 1]))
    --len;
  value.PutB(text, static_cast<int>(len));
}

void Renderer::writeStorageSize(const char *text, utility::PutStream &value,
                                utility::PutStream &numeric) {
  const char *notAvailable = mc_gettext("N/A");
  if (!text || std::strcmp(text, "N/A") == 0 || std::strcmp(text, notAvailable) == 0) {
    value.PutS(notAvailable);
    return;
  }
  const std::uint64_t bytes = static_cast<std::uint64_t>(std::atoll(text)) * 512u;
  char number[256], units[20];
  getSizeString(bytes, storageSizeUnits, storageSizePrecision, storageSizeBase,
                number, units);
  stripLeadingTrailingWhiteSpace(number);
  value.PutS(number);
  value.PutS(units);
  numeric.PutF("units=\"%s\"", units);
}

void Renderer::FormatData(QEL_DESC *desc, int column, int row,
                          utility::PutStream &value, utility::PutStream &numeric,
                          bool numericForm) {
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
  const QEL_CELL cell = qel_detail::cellAt(desc, row, column);
  const auto number = static_cast<std::uint32_t>(cell);
  const char *text = reinterpret_cast<const char *>(cell);
  const PropertyMetaData *property =
      column < desc->numColumns ? desc->pColumns[column].pProperty : nullptr;
  const EnumDecoder decoder = property ? property->decoder : nullptr;

  switch (getColumnType(desc->tableId, column)) {
  case COLTYPE_HEX8:
    value.PutF("%02x", number & 0xffu);
    break;
  case COLTYPE_HEX32:
    value.PutF("%08x", number);
    break;
  case COLTYPE_U8:
    value.PutF("%d", static_cast<int>(number & 0xffu));
    break;
  case COLTYPE_U16:
    value.PutF("%d", static_cast<int>(number & 0xffffu));
    break;
  case COLTYPE_U32:
  case COLTYPE_INDEX:
  case COLTYPE_I32:
    value.PutF("%d", static_cast<std::int32_t>(number));
    break;
  case COLTYPE_STRING:
  case COLTYPE_STRING_N:
    if (!text)
      break;
    if (numericForm) {
      value.PutS(text);
    } else if (outputFormat == services::user::Preferences::OUTPUT_JSON ||
               outputFormat == services::user::Preferences::OUTPUT_JSON_ALT) {
      // The escape scratch grows as needed and lives as long as the
      // renderer; without it the stripped text goes out unescaped.
      std::size_t need = 2 * (std::strlen(text) + 1);
      if (need > m_escapeSize) {
        framework::Memory::StaticFree(m_escape);
        m_escape = static_cast<char *>(framework::Memory::StaticAlloc(need));
        m_escapeSize = m_escape ? need : 0;
      }
      if (m_escape) {
        utility::Misc::escapeDoubleQuotes(m_escape, text);
        writeText(m_escape, value);
      } else {
        writeText(text, value);
      }
    } else {
      writeText(text, value);
    }
    break;
  case COLTYPE_QEL:
    break; // nested tables are printed by the renderers themselves
  case COLTYPE_DOUBLE:
    value.PutF("%.2f", static_cast<double>(number));
    break;
  case COLTYPE_ENUM:
    if (numericForm)
      value.PutF("%d", static_cast<std::int32_t>(number));
    else if (decoder)
      decoder(value, number);
    break;
  case COLTYPE_ENUMTOKEN:
    if (numericForm) {
      if (decoder)
        decoder(value, number);
    } else {
      value.PutS(strings::GS.toString(number));
    }
    break;
  case COLTYPE_U64:
    value.PutS(text);
    break;
  case COLTYPE_HEX_STRING: {
    // The null placeholder " " (followed by NULs up to the property's size)
    // shows blank; real bytes show as hex, size / 2 of them.
    if (!text || (text[0] == ' ' && text[1] == '\0'))
      break;
    const int n = property ? (property->size / 2) & 0xff : 0;
    char hex[2 * 255 + 1];
    HexToCharString(hex, reinterpret_cast<const unsigned char *>(text), n);
    value.PutS(hex);
    break;
  }
  case COLTYPE_BLOCKS:
    if (numericForm)
      value.PutS(text);
    else
      writeStorageSize(text, value, numeric);
    break;
  case COLTYPE_BLOCKS2BYTES:
    if (!numericForm)
      writeStorageSize(text, value, numeric);
    else if (text)
      value.PutF("%lld", static_cast<long long>(
                             static_cast<std::uint64_t>(std::atoll(text)) * 512u));
    break;
  case COLTYPE_DATETIME:
  case COLTYPE_TIME:
    if (numericForm) {
      value.PutF("%d", static_cast<std::int32_t>(number));
    } else if (number == 0) {
      value.PutS(mc_gettext("N/A"));
    } else {
      // localtime_r: no result buffer shared between threads.
      std::time_t seconds = static_cast<std::time_t>(number);
      std::tm local;
      char when[64];
      if (localtime_r(&seconds, &local) &&
          std::strftime(when, sizeof when,
                        getColumnType(desc->tableId, column) == COLTYPE_DATETIME
                            ? "%Y-%m-%d %H:%M:%S"
                            : "%H:%M:%S",
                        &local) > 0)
        value.PutS(when);
    }
    break;
  default:
    break; // an unknown table: nothing
  }
}
