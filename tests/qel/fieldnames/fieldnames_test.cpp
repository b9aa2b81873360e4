// The field-name dictionary: lookups, their fallbacks and bounds, the switch
// that turns localization off, and texts clients are known to depend on.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Dictionary : public testing::Test {
protected:
  static void SetUpTestSuite() {
    init_FieldNames();
    init_LocaleFieldNames();
  }
};

// The generated dictionary reaches the lookups: every locale, a variant
// record by table, renamed and derived element names, table indices.
TEST_F(Dictionary, TextsClientsDependOn) {
  struct Case {
    LocaleCode locale;
    unsigned keyword, table;
    const char *label, *abbreviation, *description;
  } cases[] = {
      {LOCALE_EN, tGSvirtual_2Ddisk_2Dname, 0, "Vdisk Name", "Vdisk", "User-defined name for the vdisk"},
      {LOCALE_ES, tGSvirtual_2Ddisk_2Dname, 0, "Nombre del disco virtual", "Disco virtual",
       "Nombre definido por el usuario para el disco virtual"},
      {LOCALE_FR, tGSvirtual_2Ddisk_2Dname, 0, "Nom du disque virtuel", "Disque virtuel",
       "Nom du disque virtuel défini par l'utilisateur"},
      {LOCALE_DE, tGSvirtual_2Ddisk_2Dname, 0, "Name des virtuellen Datenträgers",
       "Virtueller Datenträger", "Benutzerdefinierter Name für den virtuellen Datenträger"},
      {LOCALE_IT, tGSvirtual_2Ddisk_2Dname, 0, "Nome disco virtuale", "Disco virtuale",
       "Nome del disco virtuale definito dall'utente"},
      {LOCALE_JP, tGSvirtual_2Ddisk_2Dname, 0, "仮想ディスク名", "仮想ディスク", "仮想ディスクに対応するユーザー定義の名前"},
      {LOCALE_NL, tGSvirtual_2Ddisk_2Dname, 0, "Naam van v-disk", "V-disk", "Door gebruiker opgegeven naam voor de v-disk"},
      {LOCALE_ZH_CHS, tGSvirtual_2Ddisk_2Dname, 0, "虚拟磁盘名称", "虚拟磁盘", "用户定义的虚拟磁盘名称"},
      // The trailing blanks belong to the texts.
      {LOCALE_ZH_CHT, tGSvirtual_2Ddisk_2Dname, 0, "虛擬磁碟名稱", "虛擬磁碟", "使用者定義的虛擬磁碟名稱 "},
      {LOCALE_KO, tGSvirtual_2Ddisk_2Dname, 0, "가상 디스크 이름", "가상 디스크", "해당 가상 디스크에 대한 사용자 정의 이름 "},
      {LOCALE_JP, tGSserial_2Dnumber, 0, "シリアル番号", "", ""},
      {LOCALE_DE, tGStype, 0, "Typ", "", ""},
      {LOCALE_DE, tGStype, tGStasks, "Aufgabentyp", "", "Typ des Vorgang"},
      {LOCALE_DE, tGStype, tGSdrives, "Typ", "", "Der Typ des Datenträgers"},
      {LOCALE_DE, tGStype, tGSvolumes, "Typ", "", ""}, // an empty text stays empty
      {LOCALE_FR, tGSprimary_2Dip_2Daddress, 0, nullptr, nullptr, nullptr}, // no field
      {static_cast<LocaleCode>(2073), tGStype, 0, "Type", "", ""}, // unknown locales: English
      {static_cast<LocaleCode>(0), tGStype, 0, "Type", "", ""},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(strings::GS.toString(c.keyword)) + " in locale " + std::to_string(c.locale));
    const int table = static_cast<int>(c.table);
    EXPECT_STREQ(getConsoleLabel(c.keyword, table, c.locale), c.label);
    EXPECT_STREQ(getConsoleAbbreviation(c.keyword, table, c.locale), c.abbreviation);
    EXPECT_STREQ(getConsoleDescription(c.keyword, table, c.locale), c.description);
  }
  EXPECT_STREQ(getXMLName(tGSlun_2Dview), "LUN View");
  EXPECT_STREQ(getXMLName(tGSvolumes), "volumes");
  EXPECT_EQ(QEL_GetTableID("volumes"), 128);
  for (const char *other : {"serial-number", "pool-hist-statistics", "no-such-table", (const char *)0})
    EXPECT_EQ(QEL_GetTableID(other), 0) << (other ? other : "null");
}

TEST_F(Dictionary, SwitchedOffEveryLocaleAnswersEnglish) {
  services::capi::setL10NEnabled(false);
  for (LocaleCode locale : {LOCALE_ES, LOCALE_DE, LOCALE_JP, LOCALE_ZH_CHT, LOCALE_KO}) {
    EXPECT_STREQ(getConsoleLabel(tGSvirtual_2Ddisk_2Dname, 0, locale), "Vdisk Name");
    EXPECT_STREQ(getConsoleDescription(tGStype, tGStasks, locale), "Type of operation this task performs");
  }
  services::capi::setL10NEnabled(true);
  EXPECT_STREQ(getConsoleLabel(tGSvirtual_2Ddisk_2Dname, 0, LOCALE_KO), "가상 디스크 이름");
}

// A locale's variant records stand where English has them: default,
// drives, enclosures, 3 x sas, tasks.
TEST_F(Dictionary, LocaleVariantsByPosition) {
  const int type = MetaDataLookupTable[tGStype - 1];
  FieldNameEntry &typeDe = locale_fields[LOCALE_DE - LOCALE_ES].entries[type];
  const FieldNameEntry saved = typeDe;
  const FieldName typeTexts[7] = {{0, "", "", "Typ"},
                                  {tGSdrives, "d-drives", "", "Typ"},
                                  {tGSenclosures, "d-enc", "", "Typ"},
                                  {tGSsas_2Dstatus_2Dcontroller_2Da, "d-sas", "", "Typ"},
                                  {tGSsas_2Dstatus_2Dcontroller_2Db, "d-sas", "", "Typ"},
                                  {tGSsas_2Dstatus_2Ddrawer, "d-sas", "", "Typ"},
                                  {tGStasks, "d-tasks", "", "Aufgabentyp"}};
  typeDe.names = typeTexts;
  EXPECT_STREQ(getConsoleLabel(tGStype, tGStasks, LOCALE_DE), "Aufgabentyp");
  EXPECT_STREQ(getConsoleDescription(tGStype, tGSdrives, LOCALE_DE), "d-drives");
  EXPECT_STREQ(getFieldNameStruct(LOCALE_DE, type, 6)->label, "Aufgabentyp");
  typeDe = saved;
}

TEST_F(Dictionary, TokenBoundsAndTokensWithoutField) {
  LogCapture log;
  for (int bad : {0, 7626, 7627, -1}) { // 7626 is in range but has no keyword
    EXPECT_EQ(getConsoleLabel(bad, 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleName(static_cast<unsigned>(bad), 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleAbbreviation(bad, 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleDescription(bad, 0, LOCALE_EN), nullptr);
  }
  EXPECT_EQ(getAPIName(7626), nullptr);
  EXPECT_TRUE(log.records.empty()) << "console lookups log nothing";
  EXPECT_EQ(getAPIName(0), nullptr);
  EXPECT_EQ(getJSONName(7627), nullptr);
  EXPECT_EQ(getXMLName(0), nullptr);
  // Keywords without a field: the names still answer, the texts do not.
  // Catalogue keywords without dictionary text answer derived names instead.
  for (unsigned token : {unsigned(tGSnone), unsigned(tGSprimary_2Dip_2Daddress)}) {
    for (unsigned l = LOCALE_EN; l <= LOCALE_KO; ++l)
      EXPECT_EQ(getConsoleLabel(token, 0, static_cast<LocaleCode>(l)), nullptr);
    EXPECT_STREQ(getAPIName(token), strings::GS.toString(token));
    EXPECT_STREQ(getJSONName(token), strings::GS.toString(token));
  }
  EXPECT_EQ(getXMLName(tGSprimary_2Dip_2Daddress), nullptr);
  const struct {
    unsigned token;
    const char *label, *element;
  } derived[] = {{tGSallocated_2Dsize, "Allocated Size", "allocated-size"},
                 {tGSstorage_2Dpools, "Storage Pools", "storage-pools"}};
  for (const auto &d : derived) {
    for (unsigned l = LOCALE_EN; l <= LOCALE_KO; ++l)
      EXPECT_STREQ(getConsoleLabel(d.token, tGSvolumes, static_cast<LocaleCode>(l)), d.label);
    EXPECT_STREQ(getConsoleAbbreviation(d.token, 0, LOCALE_EN), "") << d.label;
    EXPECT_STREQ(getConsoleDescription(d.token, 0, LOCALE_EN), "") << d.label;
    EXPECT_STREQ(getXMLName(d.token), d.element);
  }
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"getAPIName( 0 ): invalid token", "getJSONName( 7627 ): invalid token",
                                      "getXMLName( 0 ): invalid token",
                                      "getXMLName: QEL field: primary-ip-address - not found"}));
}

} // namespace
