// Dictionary tables and their lookups.
#include <qel/fieldnames/fieldnames.h>

#include <qel/platform/framework.h>
#include <qel/internal.h>

#include <algorithm>
#include <cctype>

FieldNameEntry fields[kFieldSlots];
LocaleFieldTable locale_fields[kLocaleBlocks];
std::uint32_t MetaDataLookupTable[kTokenSlots];
std::int32_t BaseTypeLookupTable[kTokenSlots];
const char *xmlName[kTokenSlots];

namespace {

constexpr unsigned kMaxToken = strings::StringRepository::kMaxToken;

// Field index of a token, 0 when it is outside the token space or has none.
std::uint32_t fieldOf(long long token) {
  if (token < 1 || token > kMaxToken)
    return 0;
  return MetaDataLookupTable[token - 1];
}

// The record that the console lookups read, or null. A catalogue keyword
// without dictionary text answers its derived record in every locale.
const FieldName *consoleRecord(long long token, int tableId,
                               LocaleCode locale) {
  std::uint32_t f = fieldOf(token);
  if (f == 0) {
    const qel_detail::DerivedName *d =
        token >= 1 && token <= kMaxToken ? qel_detail::findDerivedName(static_cast<unsigned>(token))
                                         : nullptr;
    return d ? &d->record : nullptr;
  }
  return getFieldNameStruct(locale, static_cast<int>(f),
                            getFieldNameIndex(static_cast<unsigned>(tableId),
                                              static_cast<int>(f)));
}

const char *keywordName(unsigned int token, const char *invalidMessage) {
  if (token == 0 || token > kMaxToken) {
    framework::Logger::StaticLog(0, invalidMessage, static_cast<int>(token));
    return nullptr;
  }
  return strings::GS.toString(token);
}

} // namespace

// Binary search: the table is small and read only for keywords that have
// no field, so it costs nothing on the lookups of dictionary fields.
const qel_detail::DerivedName *qel_detail::findDerivedName(unsigned token) {
  const DerivedName *end = kDerivedNames + kDerivedNameCount;
  const DerivedName *d = std::lower_bound(
      kDerivedNames, end, token,
      [](const DerivedName &n, unsigned t) { return n.token < t; });
  return d != end && d->token == token ? d : nullptr;
}

const FieldName *getFieldNameStruct(LocaleCode locale, int fieldIndex,
                                    int position) {
  if (services::capi::isL10NEnabled() && locale >= LOCALE_ES &&
      locale <= LOCALE_KO) {
    const FieldName *names =
        locale_fields[locale - LOCALE_ES].entries[fieldIndex].names;
    if (names)
      return names + position;
  }
  const FieldName *names = fields[fieldIndex].names;
  return names ? names + position : nullptr;
}

int getFieldNameIndex(unsigned int tableId, int fieldIndex) {
  if (tableId == 0)
    return 0;
  const FieldNameEntry &entry = fields[fieldIndex];
  for (int i = 0; i < entry.length; ++i)
    if (entry.names[i].tableId == tableId)
      return i;
  return 0;
}

const char *getConsoleName(unsigned int token, int tableId, LocaleCode locale) {
  const FieldName *r = consoleRecord(token, tableId, locale);
  return r ? r->label : nullptr;
}

const char *getConsoleLabel(int token, int tableId, LocaleCode locale) {
  const FieldName *r = consoleRecord(token, tableId, locale);
  return r ? r->label : nullptr;
}

const char *getConsoleAbbreviation(int token, int tableId, LocaleCode locale) {
  const FieldName *r = consoleRecord(token, tableId, locale);
  return r ? r->abbreviation : nullptr;
}

const char *getConsoleDescription(int token, int tableId, LocaleCode locale) {
  const FieldName *r = consoleRecord(token, tableId, locale);
  return r ? r->description : nullptr;
}

const char *getAPIName(unsigned int token) {
  return keywordName(token, "getAPIName( %d ): invalid token");
}

const char *getJSONName(unsigned int token) {
  return keywordName(token, "getJSONName( %d ): invalid token");
}

const char *getXMLName(unsigned int token) {
  if (token == 0 || token > kMaxToken) {
    framework::Logger::StaticLog(0, "getXMLName( %d ): invalid token",
                                 static_cast<int>(token));
    return nullptr;
  }
  std::uint32_t f = MetaDataLookupTable[token - 1];
  if (f == 0) {
    if (const qel_detail::DerivedName *d = qel_detail::findDerivedName(token))
      return d->element;
    const char *text = strings::GS.toString(token);
    framework::Logger::StaticLog(0, "getXMLName: QEL field: %s - not found",
                                 text ? text : "(null)");
    return nullptr;
  }
  return xmlName[f];
}

GS_TokenValues lookupToken(char *text) { return strings::GS.toToken(text); }

int QEL_GetTableID(const char *basetype) {
  unsigned token = strings::GS.toToken(basetype);
  if (token < 1 || token > kMaxToken)
    return 0;
  return BaseTypeLookupTable[token - 1];
}

char *strlwr(char *s) {
  if (!s)
    return s;
  for (char *p = s; *p; ++p)
    *p = static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
  return s;
}

char getDecimalPointForCurrentTask() {
  switch (getThreadLocale()) {
  // The locales that write a decimal comma.
  case localeIndex(LOCALE_ES):
  case localeIndex(LOCALE_FR):
  case localeIndex(LOCALE_DE):
  case localeIndex(LOCALE_IT):
  case localeIndex(LOCALE_NL):
    return ',';
  default:
    return '.';
  }
}
