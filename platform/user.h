// User services: the caller's session with its preferences, context and user,
// and the conversions of their keyword-token settings to numeric codes.
#ifndef QEL_PLATFORM_USER_H
#define QEL_PLATFORM_USER_H

#include <qel/platform/export.h>
#include <qel/platform/keywords.h>
#include <qel/platform/locale.h>

#include <cstdint>

namespace utility {
class PutStream;
}

namespace services {
namespace user {

/// A session's output preferences. Every setting is a keyword token.
class QEL_API Preferences {
public:
  /// Output types; the values are their keyword tokens.
  enum OutputType : std::uint32_t {
    OUTPUT_TAG = tGStag,
    OUTPUT_XML2 = tGSxml2,
    OUTPUT_CONSOLE = tGSconsole,
    OUTPUT_JSON = tGSjson,
    OUTPUT_API = tGSapi,
    OUTPUT_XML2_BRIEF = tGSxml2_2Dbrief,
    OUTPUT_JSON_ALT = tGSjson_2Dalt,
    OUTPUT_API_BRIEF = tGSapi_2Dbrief,
    OUTPUT_JSON_STD = tGSjson_2Dstd, ///< standard JSON, one document
    OUTPUT_NDJSON = tGSndjson,       ///< one JSON object per row and line
    OUTPUT_CSV = tGScsv,             ///< comma-separated values, one table
    OUTPUT_TSV = tGStsv,             ///< tab-separated values, one table
    OUTPUT_HTML = tGShtml,           ///< a self-contained web page
  };
  /// Storage-size units; the values are their keyword tokens.
  enum StorageUnit : std::uint32_t {
    UNITS_AUTO = tGSauto,
    UNITS_KB = tGSkb,
    UNITS_MB = tGSmb,
    UNITS_GB = tGSgb,
    UNITS_TB = tGStb,
  };

  OutputType getOutputFormat() const { return m_outputFormat; }
  LocaleCode getLocale() const { return m_locale; }
  StorageUnit getStorageSizeUnits() const { return m_units; }
  std::uint8_t getStorageSizePrecision() const { return m_precision; }
  int getStorageSizeBase() const { return m_base; }
  /// CSV and TSV: whether the header row holds the columns' labels in the
  /// session's locale rather than their keywords.
  bool getHeaderLabels() const { return m_headerLabels; }
  /// CSV and TSV: the basetype whose rows are written, wherever they are
  /// nested; tGSnone (the default) means the first table of the print.
  std::uint32_t getSelectedTable() const { return m_selectedTable; }

  void setOutputFormat(OutputType type) { m_outputFormat = type; }
  void setLocale(LocaleCode locale) { m_locale = locale; }
  void setStorageSizeUnits(StorageUnit units) { m_units = units; }
  void setStorageSizePrecision(std::uint8_t precision) { m_precision = precision; }
  void setStorageSizeBase(int base) { m_base = base; }
  void setHeaderLabels(bool labels) { m_headerLabels = labels; }
  void setSelectedTable(std::uint32_t basetype) { m_selectedTable = basetype; }

  /// Numeric codes of the token settings; -1 for a token of another kind.
  /// Output types: console 0, api 1, api-brief 2, xml2 3, xml2-brief 4,
  /// json 5, json-alt 6, tag 7, json-std 8, ndjson 9, csv 10, tsv 11,
  /// html 12. Output modes: disabled 0, enabled 1.
  /// Storage units: auto 0, kb 1, mb 2, gb 3, tb 4. Temperature scales:
  /// celsius 0, fahrenheit 1.
  static long OutputTypeToNumeric(unsigned token);
  static long OutputModeToNumeric(unsigned token);
  static long StorageUnitToNumeric(unsigned token);
  static long TemperatureToNumeric(unsigned token);

  /// Enumeration decoders of the CLI-parameter table (defined by the output
  /// library): each writes the numeric code of a token setting with "%ld".
  static void decodeOutputType(utility::PutStream &out, unsigned int token);
  static void decodeOutputMode(utility::PutStream &out, unsigned int token);
  static void decodeStorageUnit(utility::PutStream &out, unsigned int token);
  static void decodeTemperature(utility::PutStream &out, unsigned int token);

private:
  OutputType m_outputFormat = OUTPUT_CONSOLE;
  LocaleCode m_locale = LOCALE_EN;
  StorageUnit m_units = UNITS_AUTO;
  std::uint8_t m_precision = 2;
  int m_base = 10;
  bool m_headerLabels = false;
  std::uint32_t m_selectedTable = tGSnone;
};

/// The session's terminal.
class QEL_API Context {
public:
  int getScreenWidth() const { return m_screenWidth; }
  void setScreenWidth(int width) { m_screenWidth = width; }

private:
  int m_screenWidth = 80;
};

/// The user logged in to the session.
class QEL_API User {
public:
  /// Experience levels (keyword tokens) to codes: standard 0, advanced 1,
  /// diagnostic 2; -1 for another token.
  static long ExperienceToNumeric(unsigned token);
  /// Writes ExperienceToNumeric of \p token with "%ld" (output library).
  static void decodeExperience(utility::PutStream &out, unsigned int token);
};

/// A management session: where its output goes and how it wants it.
class QEL_API Session {
public:
  /// \p output is not owned and must outlive the session.
  explicit Session(utility::PutStream &output) : m_output(&output) {}

  utility::PutStream &getOutputStream() const { return *m_output; }
  Preferences &getPreferences() { return m_preferences; }
  const Preferences &getPreferences() const { return m_preferences; }
  Context &getContext() { return m_context; }
  const Context &getContext() const { return m_context; }
  User &getUser() { return m_user; }
  const User &getUser() const { return m_user; }

private:
  utility::PutStream *m_output;
  Preferences m_preferences;
  Context m_context;
  User m_user;
};

} // namespace user

namespace scheduler {

/// The replicate-volume task of the scheduler service.
class QEL_API TaskRepVol {
public:
  /// Snapshot modes (keyword tokens) to codes: new-snapshot 0,
  /// last-snapshot 1; -1 for another token.
  static long SnapModeToNumeric(unsigned token);
  /// Writes SnapModeToNumeric of \p token with "%ld" (output library).
  static void decodeSnapMode(utility::PutStream &out, unsigned int token);
};

} // namespace scheduler
} // namespace services

#endif
