// The field-name dictionary: lookups and their fallbacks, the builders, and
// the English content against its source files.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
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

std::vector<std::string> sourceLines(const std::string &name) {
  std::ifstream in(std::string(QEL_SOURCE_DIR "/qel/fieldnames/dictionary/") + name);
  std::vector<std::string> out;
  std::string line;
  while (std::getline(in, line))
    if (!line.empty() && line[0] != '#')
      out.push_back(line);
  return out;
}

std::string trim(const std::string &s) {
  auto b = s.find_first_not_of(' ');
  auto e = s.find_last_not_of(' ');
  return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

TEST_F(Dictionary, EnglishContentMatchesItsSource) {
  // Every record of en.txt, in order, is what the lookups answer.
  std::vector<std::string> order;
  std::map<std::string, std::vector<std::vector<std::string>>> records;
  for (const auto &line : sourceLines("en.txt")) {
    std::vector<std::string> parts;
    std::stringstream ss(line);
    std::string part;
    while (std::getline(ss, part, '|'))
      parts.push_back(trim(part));
    parts.resize(4);
    std::string keyword = parts[0].substr(0, parts[0].find('@'));
    if (!records.count(keyword))
      order.push_back(keyword);
    records[keyword].push_back(parts);
  }
  ASSERT_EQ(order.size(), 977u);
  int withDescription = 0, withAbbreviation = 0, total = 0, variantFields = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const std::string &kw = order[i];
    SCOPED_TRACE(kw);
    unsigned token = strings::GS.toToken(kw.c_str());
    ASSERT_NE(token, 0u);
    ASSERT_EQ(static_cast<std::size_t>(fieldOf(token)), i + 1) << "field index follows the source order";
    const FieldNameEntry &e = fields[i + 1];
    ASSERT_EQ(e.length, records[kw].size());
    variantFields += e.length > 1;
    for (int p = 0; p < e.length; ++p) {
      const auto &r = records[kw][static_cast<std::size_t>(p)];
      const FieldName &f = e.names[p];
      std::string table = r[0].find('@') == std::string::npos
                              ? ""
                              : r[0].substr(r[0].find('@') + 1);
      EXPECT_EQ(f.tableId, table.empty() ? 0u : strings::GS.toToken(table.c_str()));
      EXPECT_EQ(f.label, r[1]);
      EXPECT_EQ(f.abbreviation, r[2]);
      EXPECT_EQ(f.description, r[3]);
      EXPECT_NE(f.label[0], '\0');
      withDescription += f.description[0] != '\0';
      withAbbreviation += f.abbreviation[0] != '\0';
      ++total;
    }
  }
  EXPECT_EQ(total, 999);
  EXPECT_EQ(variantFields, 13);
  EXPECT_EQ(withDescription, 378);
  EXPECT_EQ(withAbbreviation, 85);
  EXPECT_EQ(fields[0].names, nullptr);
  EXPECT_EQ(fields[978].names, nullptr);
}

TEST_F(Dictionary, TableIndicesOfEveryBasetype) {
  auto lines = sourceLines("basetypes.txt");
  ASSERT_EQ(lines.size(), 131u);
  std::set<int> seen;
  for (const auto &line : lines) {
    std::istringstream in(line);
    int index;
    std::string keyword;
    in >> index >> keyword;
    SCOPED_TRACE(keyword);
    EXPECT_EQ(QEL_GetTableID(keyword.c_str()), index);
    EXPECT_NE(getConsoleLabel(strings::GS.toToken(keyword.c_str()), 0, LOCALE_EN),
              nullptr) << "every basetype is a field";
    seen.insert(index);
  }
  // No other token has a table index.
  int indexed = 0;
  for (int slot : BaseTypeLookupTable)
    indexed += slot != 0;
  EXPECT_EQ(indexed, 131);
  EXPECT_EQ(QEL_GetTableID("advanced-settings-table"), 1);
  EXPECT_EQ(QEL_GetTableID("volumes"), 128);
  EXPECT_EQ(QEL_GetTableID("serial-number"), 0);      // a field, not a basetype
  EXPECT_EQ(QEL_GetTableID("pool-hist-statistics"), 0); // no index of its own
  EXPECT_EQ(QEL_GetTableID("no-such-table"), 0);
  EXPECT_EQ(QEL_GetTableID(nullptr), 0);
}

TEST_F(Dictionary, VariantRecordsAreChosenByTable) {
  struct Case {
    unsigned field, table;
    const char *label, *description;
  } cases[] = {
      {tGStype, tGSdrives, "Type", "The type of disk"},
      {tGStype, tGStasks, "Task Type", "Type of operation this task performs"},
      {tGStype, tGSsas_2Dstatus_2Ddrawer, "Type", "Type of SAS PHY lane"},
      {tGStype, tGSvolumes, "Type", ""}, // not a variant: default record
      {tGStype, 0, "Type", ""},
      {tGSname, tGSschedules, "Schedule Name", ""},
      {tGSname, tGSsystem, "Name", "User-defined name of the system"},
      {tGSstate, tGSdrives, "How Used", ""},
      {tGSmac_2Daddress, tGSiscsi_2Dport, "MAC", "Primary MAC address for the port"},
      {tGScontroller_2Da, tGSnetwork_2Dparameters, "Network Parameters Controller A", ""},
      {tGSaccess, tGSvolume_2Dview_2Dmappings, "Access", "Access rights for this volume"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(strings::GS.toString(c.field)) + "@" +
                 (c.table ? strings::GS.toString(c.table) : "0"));
    int t = static_cast<int>(c.table);
    EXPECT_STREQ(getConsoleLabel(c.field, t, LOCALE_EN), c.label);
    EXPECT_STREQ(getConsoleName(c.field, t, LOCALE_EN), c.label);
    EXPECT_STREQ(getConsoleDescription(c.field, t, LOCALE_EN), c.description);
    EXPECT_STREQ(getConsoleAbbreviation(c.field, t, LOCALE_EN), "");
  }
  EXPECT_STREQ(getConsoleLabel(tGSvirtual_2Ddisk_2Dname, 0, LOCALE_EN), "Vdisk Name");
  EXPECT_STREQ(getConsoleAbbreviation(tGSvirtual_2Ddisk_2Dname, 0, LOCALE_EN), "Vdisk");
  EXPECT_STREQ(getConsoleDescription(tGSvirtual_2Ddisk_2Dname, 0, LOCALE_EN),
               "User-defined name for the vdisk");
  EXPECT_STREQ(getConsoleLabel(tGSserial_2Dnumber, 0, LOCALE_EN), "Serial Number");
  EXPECT_STREQ(getConsoleLabel(tGSemp, 0, LOCALE_EN), "emp");
}

// Locale lookups over hand-made translations, so the fallback rules are
// tested apart from the translated content.
TEST_F(Dictionary, LocaleFallbackIsPerFieldAndFollowsTheSwitch) {
  const int type = fieldOf(tGStype);
  const int serial = fieldOf(tGSserial_2Dnumber);
  FieldNameEntry &typeDe = locale_fields[LOCALE_DE - LOCALE_ES].entries[type];
  FieldNameEntry &serialDe = locale_fields[LOCALE_DE - LOCALE_ES].entries[serial];
  const FieldNameEntry savedType = typeDe, savedSerial = serialDe;

  // Same positions as English: default, drives, enclosures, 3 x sas, tasks.
  const FieldName typeTexts[7] = {
      {0, "", "", "Typ"},
      {tGSdrives, "Der Typ des Datentraegers", "", "Typ"},
      {tGSenclosures, "d-enc", "", "Typ"},
      {tGSsas_2Dstatus_2Dcontroller_2Da, "d-sas", "", "Typ"},
      {tGSsas_2Dstatus_2Dcontroller_2Db, "d-sas", "", "Typ"},
      {tGSsas_2Dstatus_2Ddrawer, "d-sas", "", "Typ"},
      {tGStasks, "Typ des Vorgang", "", "Aufgabentyp"}};
  typeDe.names = typeTexts;
  serialDe.names = nullptr; // no German texts for this field

  EXPECT_STREQ(getConsoleLabel(tGStype, tGStasks, LOCALE_DE), "Aufgabentyp");
  EXPECT_STREQ(getConsoleDescription(tGStype, tGSdrives, LOCALE_DE),
               "Der Typ des Datentraegers");
  EXPECT_STREQ(getConsoleDescription(tGStype, tGSvolumes, LOCALE_DE), "");
  // An empty localized text is returned as it is, not replaced by English.
  EXPECT_STREQ(getConsoleDescription(tGStype, tGStasks, LOCALE_EN),
               "Type of operation this task performs");
  EXPECT_STREQ(getConsoleLabel(tGSserial_2Dnumber, 0, LOCALE_DE), "Serial Number");
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, LOCALE_FR), "Type") << "other locale";
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, static_cast<LocaleCode>(2073)), "Type");
  EXPECT_STREQ(getConsoleLabel(tGStype, 0, static_cast<LocaleCode>(0)), "Type");

  services::capi::setL10NEnabled(false);
  EXPECT_STREQ(getConsoleLabel(tGStype, tGStasks, LOCALE_DE), "Task Type");
  services::capi::setL10NEnabled(true);
  EXPECT_STREQ(getFieldNameStruct(LOCALE_DE, type, 6)->label, "Aufgabentyp");

  typeDe = savedType;
  serialDe = savedSerial;
}

TEST_F(Dictionary, TokenBoundsAndTokensWithoutField) {
  LogCapture log;
  for (unsigned bad : {0u, 7627u, 0xffffffffu}) {
    EXPECT_EQ(getConsoleLabel(static_cast<int>(bad), 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleName(bad, 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleAbbreviation(static_cast<int>(bad), 0, LOCALE_EN), nullptr);
    EXPECT_EQ(getConsoleDescription(static_cast<int>(bad), 0, LOCALE_EN), nullptr);
  }
  EXPECT_EQ(getConsoleLabel(-5, 0, LOCALE_EN), nullptr);
  EXPECT_TRUE(log.records.empty()) << "console lookups log nothing";

  EXPECT_EQ(getAPIName(0), nullptr);
  EXPECT_EQ(getJSONName(7627), nullptr);
  EXPECT_EQ(getXMLName(0), nullptr);
  EXPECT_EQ(getXMLName(7627), nullptr);
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"getAPIName( 0 ): invalid token",
                                      "getJSONName( 7627 ): invalid token",
                                      "getXMLName( 0 ): invalid token",
                                      "getXMLName( 7627 ): invalid token"}));
  log.clear();

  // Token 7626 is inside the token space; it has no keyword here.
  EXPECT_EQ(getAPIName(7626), nullptr);
  EXPECT_EQ(getConsoleLabel(7626, 0, LOCALE_EN), nullptr);
  EXPECT_TRUE(log.records.empty());

  // Keywords without a field: the names still answer, the texts do not.
  for (unsigned token : {unsigned(tGSnone), unsigned(tGSprimary_2Dip_2Daddress),
                         unsigned(tGSstorage_2Dpools)}) {
    for (unsigned l = LOCALE_EN; l <= LOCALE_KO; ++l)
      EXPECT_EQ(getConsoleLabel(token, 0, static_cast<LocaleCode>(l)), nullptr);
    EXPECT_STREQ(getAPIName(token), strings::GS.toString(token));
    EXPECT_STREQ(getJSONName(token), strings::GS.toString(token));
  }
  EXPECT_EQ(getXMLName(tGSstorage_2Dpools), nullptr);
  EXPECT_EQ(log.texts(Route::Log),
            (std::vector<std::string>{"getXMLName: QEL field: storage-pools - not found"}));
}

TEST_F(Dictionary, ElementNames) {
  struct Case {
    const char *keyword, *element;
  } cases[] = {
      {"virtual-disk-name", "virtual-disk-name"}, // keyword by default
      {"emp-b-rev", "emp-b-rev"},
      {"transfer-rate", "Transfer-Rate"}, // words capitalised, hyphens kept
      {"name", "Name"},
      {"read-flash-cache", "read_flash_cache"}, // hyphens to underscores
      {"system-name", "System_Name"},           // capitalised, underscores
      {"other-MC", "Other_MC"},
      {"fc-p1-channel", "FC-P1-CHANNEL"}, // capitals
      {"lun", "LUN"},
      {"host-channel_revision", "host-channel-revision"}, // "_" to "-"
      {"spun-down", "Spun-down"},
      {"supported-locales", "Supported-locales"},
      {"port-info", "portinfo"},
      {"size-to-expand", "sizetoexpand"},
      {"fru-oui", "FRU_OUI"},
      {"snmp-trap-host-2", "snmp-trap-host"}, // one by one
      {"lun-view", "LUN View"},
      {"task-volume-copy", "task"},
      {"status", "response"},
      {"volume-groups", "volume-group"},
  };
  for (const auto &c : cases) {
    const char *got = getXMLName(strings::GS.toToken(c.keyword));
    ASSERT_NE(got, nullptr) << c.keyword;
    EXPECT_STREQ(got, c.element) << c.keyword;
  }
  // Every field has an element name; slots of no field stay null.
  for (int f = 1; f <= 977; ++f)
    EXPECT_NE(xmlName[f], nullptr) << f;
  EXPECT_EQ(xmlName[978], nullptr);
}

TEST_F(Dictionary, BuildersAreIdempotent) {
  auto snapshot = [] {
    std::string s;
    s.append(reinterpret_cast<const char *>(fields), sizeof fields);
    s.append(reinterpret_cast<const char *>(locale_fields), sizeof locale_fields);
    s.append(reinterpret_cast<const char *>(MetaDataLookupTable), sizeof MetaDataLookupTable);
    s.append(reinterpret_cast<const char *>(BaseTypeLookupTable), sizeof BaseTypeLookupTable);
    s.append(reinterpret_cast<const char *>(xmlName), sizeof xmlName);
    return s;
  };
  std::string before = snapshot();
  long allocations = framework::Memory::totalAllocations();
  init_FieldNames();
  init_LocaleFieldNames();
  EXPECT_EQ(framework::Memory::totalAllocations(), allocations);
  EXPECT_EQ(snapshot(), before);
  for (int b = 0; b < 9; ++b)
    EXPECT_EQ(static_cast<int>(locale_fields[b].locale), LOCALE_ES + b);
}

TEST_F(Dictionary, LookupsBeforeTheBuildFindNothing) {
  std::vector<std::uint32_t> saved(MetaDataLookupTable, MetaDataLookupTable + 7626);
  std::memset(MetaDataLookupTable, 0, sizeof MetaDataLookupTable);
  LogCapture log;
  EXPECT_EQ(getConsoleLabel(tGSserial_2Dnumber, 0, LOCALE_EN), nullptr);
  EXPECT_EQ(getXMLName(tGSserial_2Dnumber), nullptr);
  EXPECT_STREQ(getAPIName(tGSserial_2Dnumber), "serial-number");
  std::copy(saved.begin(), saved.end(), MetaDataLookupTable);
}

TEST(Strlwr, InPlace) {
  char text[] = "Host_Port-A1";
  EXPECT_EQ(strlwr(text), text);
  EXPECT_STREQ(text, "host_port-a1");
  EXPECT_EQ(strlwr(nullptr), nullptr);
  char empty[] = "";
  EXPECT_STREQ(strlwr(empty), "");
}

TEST(DecimalPoint, FollowsTheThreadLocale) {
  const char expected[10] = {'.', ',', ',', ',', ',', '.', ',', '.', '.', '.'};
  for (int i = 0; i < 10; ++i) {
    setThreadLocale(i);
    EXPECT_EQ(getDecimalPointForCurrentTask(), expected[i]) << i;
  }
  setThreadLocale(3);
  char other = 0;
  std::thread([&] { other = getDecimalPointForCurrentTask(); }).join();
  EXPECT_EQ(other, '.');
  setThreadLocale(0);
}

TEST(LookupToken, UsesTheRepository) {
  char volumes[] = "volumes";
  char unknown[] = "volumez";
  EXPECT_EQ(lookupToken(volumes), tGSvolumes);
  EXPECT_EQ(lookupToken(unknown), tGS_NoToken);
}

} // namespace
