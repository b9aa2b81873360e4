// The field-name dictionary: lookups, their fallbacks and bounds, the switch
// that turns localization off, and texts clients are known to depend on.
#include "support/library.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;


// The generated dictionary reaches the console lookups: every locale, a
// variant record by table, derived texts of catalogue keywords without
// dictionary text (the same in every locale), fallbacks and bounds; switched
// off, every locale answers English. Only the name lookups log a bad token.
TEST(Dictionary, LookupsFallbacksAndBounds) {
  qeltest::startLibrary(); // builds the dictionary
  struct Case { LocaleCode locale; unsigned keyword, table; const char *label, *abbreviation, *description; }
  cases[] = {
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
      {LOCALE_KO, tGSallocated_2Dsize, tGSvolumes, "Allocated Size", "", ""},
      {LOCALE_DE, tGSstorage_2Dpools, 0, "Storage Pools", "", ""},
      {LOCALE_JP, tGSnone, 0, nullptr, nullptr, nullptr},
      {LOCALE_EN, 0, 0, nullptr, nullptr, nullptr},    {LOCALE_EN, 7626, 0, nullptr, nullptr, nullptr}, // no keyword
      {LOCALE_EN, 7627, 0, nullptr, nullptr, nullptr}, {LOCALE_EN, ~0u, 0, nullptr, nullptr, nullptr},
  };
  LogCapture log;
  for (const Case &c : cases) {
    SCOPED_TRACE("keyword " + std::to_string(c.keyword) + " in locale " + std::to_string(c.locale));
    const int keyword = static_cast<int>(c.keyword), table = static_cast<int>(c.table);
    services::capi::setL10NEnabled(false);
    EXPECT_STREQ(getConsoleLabel(keyword, table, c.locale), getConsoleLabel(keyword, table, LOCALE_EN));
    services::capi::setL10NEnabled(true);
    EXPECT_STREQ(getConsoleLabel(keyword, table, c.locale), c.label);
    EXPECT_STREQ(getConsoleName(c.keyword, table, c.locale), c.label);
    EXPECT_STREQ(getConsoleAbbreviation(keyword, table, c.locale), c.abbreviation);
    EXPECT_STREQ(getConsoleDescription(keyword, table, c.locale), c.description);
  }
  EXPECT_TRUE(log.records.empty()) << "console lookups log nothing";
  EXPECT_EQ(QEL_GetTableID("volumes"), 128);
  for (const char *other : {"serial-number", "pool-hist-statistics", "no-such-table", (const char *)0})
    EXPECT_EQ(QEL_GetTableID(other), 0) << (other ? other : "null");
}

// The API, JSON and XML element names: renamed and derived elements, and
// keywords without a field answer their keyword; bad tokens are logged.
TEST(Dictionary, ElementNames) {
  qeltest::startLibrary(); // builds the dictionary
  LogCapture log;
  EXPECT_STREQ(getXMLName(tGSlun_2Dview), "LUN View");
  EXPECT_STREQ(getXMLName(tGSvolumes), "volumes");
  EXPECT_STREQ(getXMLName(tGSallocated_2Dsize), "allocated-size");
  EXPECT_STREQ(getXMLName(tGSstorage_2Dpools), "storage-pools");
  for (unsigned token : {unsigned(tGSnone), unsigned(tGSprimary_2Dip_2Daddress)}) {
    EXPECT_STREQ(getAPIName(token), strings::GS.toString(token));
    EXPECT_STREQ(getJSONName(token), strings::GS.toString(token));
  }
  EXPECT_TRUE(!getAPIName(7626) && !getAPIName(0) && !getJSONName(7627) && !getXMLName(0) &&
              !getXMLName(tGSprimary_2Dip_2Daddress));
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"getAPIName( 0 ): invalid token", "getJSONName( 7627 ): invalid token",
                                      "getXMLName( 0 ): invalid token",
                                      "getXMLName: QEL field: primary-ip-address - not found"}));
}

} // namespace
