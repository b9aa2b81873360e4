// The nine translated locales: coverage of every field and variant record,
// English-only fields, the switch that turns localization off, and a few
// texts that clients are known to depend on.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const LocaleCode kTranslated[] = {LOCALE_ES, LOCALE_FR, LOCALE_DE, LOCALE_IT, LOCALE_JP,
                                  LOCALE_NL, LOCALE_ZH_CHS, LOCALE_ZH_CHT, LOCALE_KO};
const char *const kFiles[] = {"es", "fr", "de", "it", "jp", "nl", "zh_chs", "zh_cht", "ko"};

// keyword -> the table keywords of its records ("" for the default record).
using Records = std::map<std::string, std::vector<std::string>>;

Records readSource(const std::string &name) {
  std::ifstream in(std::string(QEL_SOURCE_DIR "/qel/fieldnames/dictionary/") + name + ".txt");
  Records out;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    std::string key = line.substr(0, line.find(' '));
    const size_t at = key.find('@');
    out[key.substr(0, at)].push_back(at == std::string::npos ? "" : key.substr(at + 1));
  }
  return out;
}

class Translations : public testing::Test {
protected:
  static void SetUpTestSuite() {
    init_FieldNames();
    init_LocaleFieldNames();
  }
  static unsigned token(const std::string &keyword) { return strings::GS.toToken(keyword.c_str()); }
  static const FieldNameEntry &entry(LocaleCode locale, unsigned token) {
    return locale_fields[locale - LOCALE_ES].entries[MetaDataLookupTable[token - 1]];
  }
};

TEST_F(Translations, TextsClientsDependOn) {
  struct Case {
    LocaleCode locale;
    const char *keyword;
    unsigned table;
    const char *label, *abbreviation, *description;
  };
  const Case cases[] = {
      {LOCALE_EN, "virtual-disk-name", 0, "Vdisk Name", "Vdisk", "User-defined name for the vdisk"},
      {LOCALE_ES, "virtual-disk-name", 0, "Nombre del disco virtual", "Disco virtual",
       "Nombre definido por el usuario para el disco virtual"},
      {LOCALE_FR, "virtual-disk-name", 0, "Nom du disque virtuel", "Disque virtuel",
       "Nom du disque virtuel défini par l'utilisateur"},
      {LOCALE_DE, "virtual-disk-name", 0, "Name des virtuellen Datenträgers",
       "Virtueller Datenträger", "Benutzerdefinierter Name für den virtuellen Datenträger"},
      {LOCALE_IT, "virtual-disk-name", 0, "Nome disco virtuale", "Disco virtuale",
       "Nome del disco virtuale definito dall'utente"},
      {LOCALE_JP, "virtual-disk-name", 0, "仮想ディスク名", "仮想ディスク",
       "仮想ディスクに対応するユーザー定義の名前"},
      {LOCALE_NL, "virtual-disk-name", 0, "Naam van v-disk", "V-disk",
       "Door gebruiker opgegeven naam voor de v-disk"},
      {LOCALE_ZH_CHS, "virtual-disk-name", 0, "虚拟磁盘名称", "虚拟磁盘", "用户定义的虚拟磁盘名称"},
      // The trailing blanks belong to the texts.
      {LOCALE_ZH_CHT, "virtual-disk-name", 0, "虛擬磁碟名稱", "虛擬磁碟", "使用者定義的虛擬磁碟名稱 "},
      {LOCALE_KO, "virtual-disk-name", 0, "가상 디스크 이름", "가상 디스크",
       "해당 가상 디스크에 대한 사용자 정의 이름 "},
      {LOCALE_DE, "serial-number", 0, "Seriennummer", "", ""},
      {LOCALE_JP, "serial-number", 0, "シリアル番号", "", ""},
      {LOCALE_DE, "type", 0, "Typ", "", ""},
      {LOCALE_DE, "type", tGStasks, "Aufgabentyp", "", "Typ des Vorgang"},
      {LOCALE_DE, "type", tGSdrives, "Typ", "", "Der Typ des Datenträgers"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.keyword) + " in locale " + std::to_string(c.locale));
    const unsigned t = token(c.keyword);
    const int table = static_cast<int>(c.table);
    EXPECT_STREQ(getConsoleLabel(t, table, c.locale), c.label);
    EXPECT_STREQ(getConsoleAbbreviation(t, table, c.locale), c.abbreviation);
    EXPECT_STREQ(getConsoleDescription(t, table, c.locale), c.description);
  }
}

TEST_F(Translations, EveryLocaleTranslatesTheSameFields) {
  const Records english = readSource("en");
  std::set<std::string> englishOnly;
  for (const auto &[keyword, tables] : english)
    if (!readSource("es").count(keyword))
      englishOnly.insert(keyword);
  EXPECT_EQ(englishOnly.size(), 114u);
  EXPECT_EQ(english.size() - englishOnly.size(), 863u);

  for (size_t l = 0; l < std::size(kTranslated); ++l) {
    SCOPED_TRACE(kFiles[l]);
    const LocaleCode locale = kTranslated[l];
    const Records translated = readSource(kFiles[l]);
    int fieldsWithTexts = 0;
    for (const auto &[keyword, tables] : english) {
      const unsigned t = token(keyword);
      if (englishOnly.count(keyword)) {
        EXPECT_EQ(translated.count(keyword), 0u) << keyword;
        EXPECT_EQ(entry(locale, t).names, nullptr) << keyword;
        EXPECT_STREQ(getConsoleLabel(t, 0, locale), getConsoleLabel(t, 0, LOCALE_EN)) << keyword;
        continue;
      }
      ASSERT_TRUE(translated.count(keyword)) << keyword;
      EXPECT_EQ(translated.at(keyword), tables) << keyword << ": variant records differ";
      ASSERT_NE(entry(locale, t).names, nullptr) << keyword << " falls back to English";
      ++fieldsWithTexts;
      for (const std::string &table : tables) {
        const int tableId = table.empty() ? 0 : static_cast<int>(token(table));
        const char *label = getConsoleLabel(t, tableId, locale);
        ASSERT_NE(label, nullptr) << keyword;
        EXPECT_STRNE(label, "") << keyword << "@" << table;
      }
    }
    EXPECT_EQ(fieldsWithTexts, 863);
  }
}

TEST_F(Translations, KeywordsWithoutAFieldStayOutOfTheTables) {
  for (const char *keyword : {"primary-ip-address", "secondary-mac-address", "total-sectors-written"})
    for (LocaleCode locale : kTranslated)
      EXPECT_EQ(getConsoleLabel(token(keyword), 0, locale), nullptr) << keyword;
}

TEST_F(Translations, SwitchedOffEveryLocaleAnswersEnglish) {
  services::capi::setL10NEnabled(false);
  for (LocaleCode locale : kTranslated) {
    EXPECT_STREQ(getConsoleLabel(tGSvirtual_2Ddisk_2Dname, 0, locale), "Vdisk Name");
    EXPECT_STREQ(getConsoleDescription(tGStype, tGStasks, locale),
                 "Type of operation this task performs");
  }
  services::capi::setL10NEnabled(true);
  EXPECT_STREQ(getConsoleLabel(tGSvirtual_2Ddisk_2Dname, 0, LOCALE_KO), "가상 디스크 이름");
}

} // namespace
