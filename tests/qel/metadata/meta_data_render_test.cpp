// Metadata documents: exact texts of each family, the table selection, the
// requesting session's locale, and real parsers reading the documents.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

using Preferences = services::user::Preferences;

class Meta : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  std::string meta(const char *which, Preferences::OutputType type = Preferences::OUTPUT_API,
                   LocaleCode locale = LOCALE_EN) {
    session_.getPreferences().setOutputFormat(type);
    session_.getPreferences().setLocale(locale);
    out_.Rewind();
    EXPECT_EQ(cli_metaHandler(&session_, which), 0);
    return out_.pTail();
  }
  static int count(const std::string &text, const std::string &what) {
    int n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
      ++n;
    return n;
  }
  static std::vector<std::string> oids(const std::string &text) {
    std::regex oid("oid:\"(\\d+)\"");
    std::vector<std::string> out;
    for (std::sregex_iterator it(text.begin(), text.end(), oid), end; it != end; ++it)
      out.push_back((*it)[1]);
    return out;
  }

  utility::BufferStream out_{4 << 20};
  services::user::Session session_{out_};
};

const char kDecl[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

TEST_F(Meta, XmlDocument) {
  const std::string expected =
      std::string(kDecl) +
      "<RESPONSE>\n"
      "<OBJECT name=\"title\" basetype=\"snmp-users\">\n"
      "<PROPERTY name=\"name\" type=\"string\" draw=\"true\" size=\"10\" sort=\"string\" "
      "key=\"false\" abbr=\"\" desc=\"\">Name</PROPERTY>\n"
      "<PROPERTY name=\"slot\" type=\"uint32\" draw=\"true\" size=\"6\" sort=\"string\" "
      "key=\"false\" abbr=\"\" desc=\"\">Slot</PROPERTY>\n"
      "</OBJECT>\n"
      "</RESPONSE>\n";
  for (auto type : {Preferences::OUTPUT_API, Preferences::OUTPUT_XML2,
                    Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2_BRIEF})
    EXPECT_EQ(meta("snmp-users", type), expected);
}

TEST_F(Meta, JsonScript) {
  EXPECT_EQ(meta("snmp-users", Preferences::OUTPUT_JSON),
            "new APIData([\n"
            "  new APISnmpUsers([\n"
            "    new APIProp({name:\"name\",value:\"Name\",type:\"string\",size:\"10\","
            "draw:\"true\",sort:\"false\",sortType:\"string\",key:\"false\",abbr:\"\",desc:\"\"}),\n"
            "    new APIProp({name:\"slot\",value:\"Slot\",type:\"uint32\",size:\"6\","
            "draw:\"true\",sort:\"false\",sortType:\"string\",key:\"false\",abbr:\"\",desc:\"\"})\n"
            "    ], {basetype:\"snmp-users\",name:\"meta\",oid:\"0\",primaryKey:\"none\","
            "parentBasetype:\"none\",parentKeyProp:\"none\"})\n"
            "])\n");
  EXPECT_EQ(meta("snmp-users", Preferences::OUTPUT_JSON_ALT),
            meta("snmp-users", Preferences::OUTPUT_JSON));
}

TEST_F(Meta, CompanionsAndTheTagForm) {
  std::string tag = meta("events", Preferences::OUTPUT_TAG);
  EXPECT_EQ(count(tag, "<PROPERTY "), 13);
  EXPECT_EQ(tag.find("<OBJECT"), std::string::npos);
  EXPECT_EQ(tag.rfind("<PROPERTY name=\"time-stamp\" ", 0), 0u) << "no envelope";
  EXPECT_NE(tag.find("<PROPERTY name=\"time-stamp-numeric\" type=\"uint32\" draw=\"false\" "
                     "size=\"25\" sort=\"datetime\" key=\"false\" abbr=\"\" "
                     "desc=\"Date and time when the event occurred\">Timestamp</PROPERTY>\n"),
            std::string::npos);
  std::string json = meta("events", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find(
                "    new APIProp({name:\"time-stamp\",value:\"Timestamp\",type:\"string\","
                "size:\"25\",draw:\"true\",sort:\"false\",sortType:\"datetime\",key:\"false\","
                "abbr:\"\",desc:\"Date and time when the event occurred\"}),\n"
                "    new APIProp({name:\"time-stamp-numeric\",value:\"Timestamp\",type:\"uint32\","
                "size:\"25\",draw:\"false\",sort:\"false\",sortType:\"integer\",key:\"false\","
                "abbr:\"\",desc:\"Date and time when the event occurred\"}),\n"),
            std::string::npos);
  EXPECT_EQ(meta("events", Preferences::OUTPUT_CONSOLE), "");
  EXPECT_EQ(meta("all", Preferences::OUTPUT_CONSOLE), "");
}

TEST_F(Meta, VolumesJsonEndsWithItsRegistration) {
  std::string json = meta("volumes", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find("\n    ], {basetype:\"volumes\",name:\"meta\",oid:\"0\","
                      "primaryKey:\"serial-number\",parentBasetype:\"volume-groups\","
                      "parentKeyProp:\"volume-group\"})\n])\n"),
            std::string::npos);
  EXPECT_EQ(count(json, "{name:\"size-numeric\""), 1);
  EXPECT_EQ(count(json, "{name:\"total-size-numeric\""), 1);
  EXPECT_EQ(count(json, "new APIProp("), 42 + 19); // 16 ENUM and 3 BLOCKS companions
}

TEST_F(Meta, TrailingNestedColumnsAndEmptyTables) {
  // schedules ends with the nested task column: no comma after the last
  // rendered property.
  std::string json = meta("schedules", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find("desc:\"\"})\n    ], {basetype:\"schedules\""), std::string::npos)
      << json;
  EXPECT_EQ(count(json, "new APIProp("), 7); // six properties and one companion
  EXPECT_EQ(meta("refresh_counters", Preferences::OUTPUT_JSON),
            "new APIData([\n  new APIRefreshCounters([\n\n    ], {basetype:\"refresh_counters\","
            "name:\"meta\",oid:\"0\",primaryKey:\"none\",parentBasetype:\"none\","
            "parentKeyProp:\"none\"})\n])\n");
  EXPECT_EQ(meta("refresh_counters"), std::string(kDecl) +
                                          "<RESPONSE>\n<OBJECT name=\"title\" "
                                          "basetype=\"refresh_counters\">\n</OBJECT>\n</RESPONSE>\n");
}

TEST_F(Meta, KeywordCaseInXmlAndJson) {
  EXPECT_NE(meta("show-other-MC-status").find("<OBJECT name=\"title\" basetype=\"show-other-mc-status\">"),
            std::string::npos);
  std::string json = meta("show-other-MC-status", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find("  new APIShowOtherMCStatus([\n"), std::string::npos);
  EXPECT_NE(json.find("{basetype:\"show-other-MC-status\",name:\"meta\""), std::string::npos);
}

TEST_F(Meta, SelectionOfTables) {
  TableMetaDataManager *registry = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  int filled = 0, wbi = 0;
  std::vector<std::string> slots, wbiSlots;
  for (int slot = 0; slot < TableMetaDataManager::kSlots; ++slot) {
    if (TableMetaData *t = registry->getSlot(slot)) {
      ++filled;
      slots.push_back(std::to_string(slot));
      if (t->isWBI()) {
        ++wbi;
        wbiSlots.push_back(std::to_string(slot));
      }
    }
  }
  EXPECT_EQ(filled, 136 + 6) << "136 registrations and the 6 fixture tables";
  for (const char *which : {"all", "ALL", "All", static_cast<const char *>(nullptr)}) {
    std::string json = meta(which, Preferences::OUTPUT_JSON);
    EXPECT_EQ(oids(json), slots) << (which ? which : "null");
  }
  for (const char *which : {"wbi", "WBI", "wBi"})
    EXPECT_EQ(oids(meta(which, Preferences::OUTPUT_JSON)), wbiSlots) << which;
  EXPECT_EQ(count(meta("all"), "<OBJECT "), filled);

  struct Case {
    const char *which;
    std::vector<std::string> basetypes, oids;
  } cases[] = {
      {"events,volumes", {"events", "volumes"}, {"0", "1"}},
      {"events,nosuch,volumes", {"events", "volumes"}, {"0", "1"}},
      {"events, volumes", {"events"}, {"0"}},
      {"events,,volumes", {"events", "volumes"}, {"0", "1"}},
      {"volumes,volumes", {"volumes", "volumes"}, {"0", "1"}},
      {"events", {"events"}, {"0"}},
      {"nosuch", {}, {}},
      {"Events", {}, {}},
      {"storage-pools", {"storage-pools"}, {"0"}}, // an overflow table, by name
      {"spares,storage-pools", {"spares", "storage-pools"}, {"0", "1"}},
  };
  std::regex basetype("\\{basetype:\"([^\"]+)\"");
  for (const auto &c : cases) {
    std::string json = meta(c.which, Preferences::OUTPUT_JSON);
    std::vector<std::string> got;
    for (std::sregex_iterator it(json.begin(), json.end(), basetype), end; it != end; ++it)
      got.push_back((*it)[1]);
    EXPECT_EQ(got, c.basetypes) << c.which;
    EXPECT_EQ(oids(json), c.oids) << c.which;
  }
  EXPECT_EQ(meta("nosuch"), std::string(kDecl) + "<RESPONSE>\n</RESPONSE>\n");
  EXPECT_EQ(meta("nosuch", Preferences::OUTPUT_JSON), "new APIData([\n])\n");
}

// The labels follow the requesting session's locale even while other threads
// keep setting the registry's shared locale to English.
TEST_F(Meta, LabelsInTheSessionsLocaleWhileOthersUseEnglish) {
  const int field = static_cast<int>(MetaDataLookupTable[tGStime_2Dstamp - 1]);
  FieldNameEntry &de = locale_fields[LOCALE_DE - LOCALE_ES].entries[field];
  const FieldNameEntry saved = de;
  static const FieldName german[1] = {{0, "Zeitpunkt des Ereignisses", "", "Zeitstempel"}};
  de.names = german;
  std::atomic<bool> stop{false};
  std::thread other([&] {
    while (!stop.load())
      TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  });
  for (int i = 0; i < 200; ++i) {
    std::string xml = meta("events", Preferences::OUTPUT_API, LOCALE_DE);
    ASSERT_NE(xml.find("desc=\"Zeitpunkt des Ereignisses\">Zeitstempel</PROPERTY>"),
              std::string::npos);
  }
  stop.store(true);
  other.join();
  de = saved;
  const std::string restored =
      std::string(">") + getConsoleLabel(tGStime_2Dstamp, tGSevents, LOCALE_DE) + "</PROPERTY>";
  EXPECT_NE(meta("events", Preferences::OUTPUT_API, LOCALE_DE).find(restored), std::string::npos);
  EXPECT_NE(meta("volumes", Preferences::OUTPUT_API, LOCALE_DE).find(">Durable ID</PROPERTY>"),
            std::string::npos)
      << "a field without German texts reads English";
}

// Real parsers: the XML document of all tables in every locale, and the JSON
// script evaluated by Node.js with stub constructors.
TEST_F(Meta, DocumentsParse) {
  char path[] = "/tmp/qel_meta_XXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  close(fd);
  for (LocaleCode locale : {LOCALE_EN, LOCALE_ES, LOCALE_FR, LOCALE_DE, LOCALE_IT, LOCALE_JP,
                            LOCALE_NL, LOCALE_ZH_CHS, LOCALE_ZH_CHT, LOCALE_KO}) {
    std::ofstream(path) << meta("all", Preferences::OUTPUT_API, locale);
    std::string parse = std::string("python3 -c \"import sys, xml.etree.ElementTree as E; "
                                    "r = E.parse(sys.argv[1]).getroot(); "
                                    "sys.exit(0 if len(r.findall('OBJECT')) > 130 else 1)\" ") +
                        path;
    EXPECT_EQ(std::system(parse.c_str()), 0) << "locale " << locale;
  }
  std::ofstream(path) << meta("all", Preferences::OUTPUT_JSON, LOCALE_JP);
  std::string node =
      std::string("node -e \"const fs = require('fs'); let n = 0;"
                  "function APIData(t) { this.tables = t; }"
                  "function APIProp(p) { this.p = p; n++; }"
                  "const handler = { has: () => true, get: (t, k) => k in globalThis ? "
                  "globalThis[k] : function (props, id) { this.props = props; this.id = id; } };"
                  "const d = new Function('scope', 'with (scope) { return ' + "
                  "fs.readFileSync(process.argv[1], 'utf8') + '; }')(new Proxy({}, handler));"
                  "process.exit(d.tables.length > 130 && n > 1400 ? 0 : 1);\" ") +
      path;
  EXPECT_EQ(std::system(node.c_str()), 0);
  std::remove(path);
}

} // namespace
