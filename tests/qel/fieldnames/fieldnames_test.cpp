// The field-name dictionary: lookups, their fallbacks and their bounds, and
// the table indices and element names against their source files.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
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
  static int fieldOf(unsigned token) { return MetaDataLookupTable[token - 1]; }
};

// The records of a dictionary source, each split at '|' with blanks trimmed.
std::vector<std::vector<std::string>> sourceRecords(const std::string &name) {
  std::ifstream in(std::string(QEL_SOURCE_DIR "/qel/fieldnames/dictionary/") + name);
  std::vector<std::vector<std::string>> out;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    std::vector<std::string> parts;
    std::stringstream ss(line);
    for (std::string part; std::getline(ss, part, '|');) {
      auto b = part.find_first_not_of(' '), e = part.find_last_not_of(' ');
      parts.push_back(b == std::string::npos ? "" : part.substr(b, e - b + 1));
    }
    out.push_back(parts);
  }
  return out;
}

TEST_F(Dictionary, ElementNamesMatchTheirSource) {
  std::map<std::string, std::string> renamed;
  for (const auto &parts : sourceRecords("elements.txt"))
    renamed[parts.at(0)] = parts.at(1);
  ASSERT_EQ(renamed.size(), 194u);
  LogCapture log;
  int named = 0;
  for (unsigned t = 1; t <= 7626; ++t) {
    if (fieldOf(t) == 0)
      continue;
    ++named;
    std::string keyword = strings::GS.toString(t);
    EXPECT_STREQ(getXMLName(t), renamed.count(keyword) ? renamed[keyword].c_str() : keyword.c_str());
  }
  EXPECT_EQ(named, 977);
  EXPECT_TRUE(log.records.empty());
  EXPECT_STREQ(getXMLName(tGSlun_2Dview), "LUN View");
  EXPECT_EQ(xmlName[978], nullptr);
}

TEST_F(Dictionary, TableIndicesOfEveryBasetype) {
  int listed = 0;
  for (const auto &r : sourceRecords("basetypes.txt")) {
    std::istringstream in(r[0]);
    int index;
    std::string keyword;
    in >> index >> keyword;
    ++listed;
    EXPECT_EQ(QEL_GetTableID(keyword.c_str()), index) << keyword;
    EXPECT_NE(getConsoleLabel(strings::GS.toToken(keyword.c_str()), 0, LOCALE_EN), nullptr)
        << keyword << " is a field too";
  }
  EXPECT_EQ(listed, 131);
  EXPECT_EQ(std::count_if(std::begin(BaseTypeLookupTable), std::end(BaseTypeLookupTable),
                          [](int slot) { return slot != 0; }),
            131)
      << "no other token has a table index";
  for (const char *other : {"serial-number", "pool-hist-statistics", "no-such-table", (const char *)0})
    EXPECT_EQ(QEL_GetTableID(other), 0) << (other ? other : "null");
}

TEST_F(Dictionary, LocaleRecordsAndTheirFallbacks) {
  const int type = fieldOf(tGStype);
  FieldNameEntry &typeDe = locale_fields[LOCALE_DE - LOCALE_ES].entries[type];
  const FieldNameEntry saved = typeDe;
  // Same positions as English: default, drives, enclosures, 3 x sas, tasks.
  const FieldName typeTexts[7] = {{0, "", "", "Typ"},
                                  {tGSdrives, "Der Typ des Datentraegers", "", "Typ"},
                                  {tGSenclosures, "d-enc", "", "Typ"},
                                  {tGSsas_2Dstatus_2Dcontroller_2Da, "d-sas", "", "Typ"},
                                  {tGSsas_2Dstatus_2Dcontroller_2Db, "d-sas", "", "Typ"},
                                  {tGSsas_2Dstatus_2Ddrawer, "d-sas", "", "Typ"},
                                  {tGStasks, "Typ des Vorgang", "", "Aufgabentyp"}};
  typeDe.names = typeTexts;
  EXPECT_STREQ(getConsoleLabel(tGStype, tGStasks, LOCALE_DE), "Aufgabentyp");
  EXPECT_STREQ(getConsoleDescription(tGStype, tGSdrives, LOCALE_DE), "Der Typ des Datentraegers");
  // An empty localized text is returned as it is, not replaced by English.
  EXPECT_STREQ(getConsoleDescription(tGStype, tGSvolumes, LOCALE_DE), "");
  EXPECT_STREQ(getFieldNameStruct(LOCALE_DE, type, 6)->label, "Aufgabentyp");
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, LOCALE_FR), "Type") << "other locale";
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, static_cast<LocaleCode>(2073)), "Type");
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, static_cast<LocaleCode>(0)), "Type");
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
                 {tGSstorage_2Dpools, "Storage Pools", "storage-pools"},
                 {tGSthin_2Dprovisioning_2Denabled, "Thin Provisioning Enabled",
                  "thin-provisioning-enabled"}};
  for (const auto &d : derived) {
    for (unsigned l = LOCALE_EN; l <= LOCALE_KO; ++l)
      EXPECT_STREQ(getConsoleLabel(d.token, tGSvolumes, static_cast<LocaleCode>(l)), d.label);
    EXPECT_STREQ(getConsoleAbbreviation(d.token, 0, LOCALE_EN), "") << d.label;
    EXPECT_STREQ(getConsoleDescription(d.token, 0, LOCALE_EN), "") << d.label;
    EXPECT_STREQ(getXMLName(d.token), d.element);
  }
  for (const char *other : {"serial-number", "pool-hist-statistics", "no-such-table", (const char *)0})
    EXPECT_EQ(QEL_GetTableID(other), 0) << (other ? other : "null");
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"getAPIName( 0 ): invalid token",
                                      "getJSONName( 7627 ): invalid token",
                                      "getXMLName( 0 ): invalid token",
                                      "getXMLName: QEL field: primary-ip-address - not found"}));
}

} // namespace
