// The field-name dictionary: labels, abbreviations and descriptions of every
// keyword in ten locales, tag-XML element names, and the map from a basetype
// token to its table index.
//
// The tables are filled once by init_FieldNames and init_LocaleFieldNames
// while the output service is constructed, and only read afterwards: every
// lookup here is lock-free, allocation-free and constant time apart from a
// scan of at most a field's few variant records.
#ifndef QEL_FIELDNAMES_FIELDNAMES_H
#define QEL_FIELDNAMES_FIELDNAMES_H

#include <qel/platform/export.h>
#include <qel/platform/keywords.h>
#include <qel/platform/locale.h>

#include <cstdint>

/// One record of a field's texts. All texts are constant UTF-8 owned by the
/// dictionary; none is null (empty texts are "").
struct FieldName {
  std::uint32_t tableId;    ///< basetype token of a variant; 0 = default
  const char *description;
  const char *abbreviation;
  const char *label;        ///< never empty; also the field's console name
};

/// Sizes of the dictionary tables. They are part of the tables' declared
/// types, so they are fixed for the life of the ABI: field indices run
/// 1..998 (entry 0 unused) and the token space 1..7626 is the keyword
/// repository's (StringRepository::kMaxToken).
constexpr int kFieldSlots = 999;
constexpr int kTokenSlots = static_cast<int>(strings::StringRepository::kMaxToken);
/// Locale blocks of locale_fields: the nine locales after English.
constexpr int kLocaleBlocks = 9;

/// A field's record array in one locale.
struct FieldNameEntry {
  std::uint8_t length;      ///< records (English entries only; 0 elsewhere)
  const FieldName *names;   ///< record 0 is the default; null = no texts
};

/// The field texts of one non-English locale.
struct LocaleFieldTable {
  LocaleCode locale;
  FieldNameEntry entries[kFieldSlots]; ///< indexed by field index
};

/// English field entries, indexed by field index (1..998; 0 unused).
extern QEL_API FieldNameEntry fields[kFieldSlots];
/// Nine locale blocks, LOCALE_ES (block 0) to LOCALE_KO (block 8).
extern QEL_API LocaleFieldTable locale_fields[kLocaleBlocks];
/// Slot t - 1: the field index of token t, 0 when token t has no field.
extern QEL_API std::uint32_t MetaDataLookupTable[kTokenSlots];
/// Slot t - 1: the table index of basetype token t, 0 when it has none.
extern QEL_API std::int32_t BaseTypeLookupTable[kTokenSlots];
/// Slot f: the tag-XML element name of field f (indexed by field index).
extern QEL_API const char *xmlName[kTokenSlots];

/// Fills fields, MetaDataLookupTable, BaseTypeLookupTable and xmlName.
/// Allocates nothing; running it again leaves every table as it was.
QEL_API void init_FieldNames();
/// Fills locale_fields; needs init_FieldNames first.
QEL_API void init_LocaleFieldNames();

/// The record at \p position of field \p fieldIndex in \p locale: from the
/// locale's array when localization is enabled and the locale has texts for
/// the field, else English. Locales outside LOCALE_EN..LOCALE_KO read as
/// English. The caller passes a valid field index and position; null before
/// the dictionary is built.
QEL_API const FieldName *getFieldNameStruct(LocaleCode locale, int fieldIndex,
                                            int position);
/// Position of the record of field \p fieldIndex for table \p tableId: the
/// first English record whose tableId matches, else 0 (the default record).
QEL_API int getFieldNameIndex(unsigned int tableId, int fieldIndex);

/// Texts of a keyword for a table (0: the default texts) in a locale; null
/// for a token outside 1..7626 or without a field. No log lines.
QEL_API const char *getConsoleName(unsigned int token, int tableId,
                                   LocaleCode locale);
QEL_API const char *getConsoleLabel(int token, int tableId, LocaleCode locale);
QEL_API const char *getConsoleAbbreviation(int token, int tableId,
                                           LocaleCode locale);
QEL_API const char *getConsoleDescription(int token, int tableId,
                                          LocaleCode locale);

/// The keyword text of any token of the repository (XML API and JSON names).
/// Logs "getAPIName( %d ): invalid token" and returns null for 0 and tokens
/// above 7626.
QEL_API const char *getAPIName(unsigned int token);
/// As getAPIName, logging "getJSONName( %d ): invalid token".
QEL_API const char *getJSONName(unsigned int token);
/// The tag-XML element name of a field. Logs and returns null for an invalid
/// token or a token without a field.
QEL_API const char *getXMLName(unsigned int token);

/// The token of a keyword text; 0 when the repository does not know it.
QEL_API GS_TokenValues lookupToken(char *text);
/// The table index of a basetype keyword; 0 when it is not a basetype.
QEL_API int QEL_GetTableID(const char *basetype);

extern "C" {
/// Lower-cases \p s in place; returns it (null for null).
QEL_API char *strlwr(char *s);
/// The calling thread's decimal separator: ',' for Spanish, French, German,
/// Italian and Dutch threads, '.' otherwise.
QEL_API char getDecimalPointForCurrentTask();
}

#endif
