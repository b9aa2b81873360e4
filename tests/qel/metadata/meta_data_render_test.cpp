// Metadata documents: exact texts of each family, the table selection and
// the requesting session's locale.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <atomic>
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
  EXPECT_EQ(meta("snmp-users", Preferences::OUTPUT_CONSOLE), "");
  EXPECT_EQ(meta("all", Preferences::OUTPUT_CONSOLE), "");
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
}

TEST_F(Meta, JsonTrailersAndEmptyTables) {
  std::string json = meta("volumes", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find("\n    ], {basetype:\"volumes\",name:\"meta\",oid:\"0\","
                      "primaryKey:\"serial-number\",parentBasetype:\"volume-groups\","
                      "parentKeyProp:\"volume-group\"})\n])\n"),
            std::string::npos);
  EXPECT_EQ(count(json, "{name:\"size-numeric\""), 1);
  EXPECT_EQ(count(json, "{name:\"total-size-numeric\""), 1);
  EXPECT_EQ(count(json, "new APIProp("), 42 + 19); // 16 ENUM and 3 BLOCKS companions
  // schedules ends with the nested task column: no comma after the last
  // rendered property.
  json = meta("schedules", Preferences::OUTPUT_JSON);
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

TEST_F(Meta, KeywordCaseAndUnknownTables) {
  EXPECT_NE(meta("show-other-MC-status").find("<OBJECT name=\"title\" basetype=\"show-other-mc-status\">"),
            std::string::npos);
  std::string json = meta("show-other-MC-status", Preferences::OUTPUT_JSON);
  EXPECT_NE(json.find("  new APIShowOtherMCStatus([\n"), std::string::npos);
  EXPECT_NE(json.find("{basetype:\"show-other-MC-status\",name:\"meta\""), std::string::npos);
  EXPECT_EQ(meta("nosuch"), std::string(kDecl) + "<RESPONSE>\n</RESPONSE>\n");
  EXPECT_EQ(meta("nosuch", Preferences::OUTPUT_JSON), "new APIData([\n])\n");
}

TEST_F(Meta, SelectionOfTables) {
  TableMetaDataManager *registry = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  std::vector<std::string> slots, wbiSlots;
  for (int slot = 0; slot < TableMetaDataManager::kSlots; ++slot) {
    if (TableMetaData *t = registry->getSlot(slot)) {
      slots.push_back(std::to_string(slot));
      if (t->isWBI())
        wbiSlots.push_back(std::to_string(slot));
    }
  }
  EXPECT_EQ(slots.size(), 136u + 6) << "136 registrations and the 6 fixture tables";
  for (const char *which : {"all", "All", static_cast<const char *>(nullptr)})
    EXPECT_EQ(oids(meta(which, Preferences::OUTPUT_JSON)), slots) << (which ? which : "null");
  EXPECT_EQ(oids(meta("wBi", Preferences::OUTPUT_JSON)), wbiSlots);
  EXPECT_EQ(count(meta("all"), "<OBJECT "), static_cast<int>(slots.size()));

  struct Case {
    const char *which;
    std::vector<std::string> basetypes;
  } cases[] = {
      {"events,nosuch,volumes", {"events", "volumes"}},
      {"events, volumes", {"events"}},
      {"events,,volumes", {"events", "volumes"}},
      {"volumes,volumes", {"volumes", "volumes"}},
      {"Events", {}},
      {"spares,storage-pools", {"spares", "storage-pools"}}, // an overflow table, by name
  };
  std::regex basetype("\\{basetype:\"([^\"]+)\"");
  for (const auto &c : cases) {
    std::string json = meta(c.which, Preferences::OUTPUT_JSON);
    std::vector<std::string> got, numbered;
    for (std::sregex_iterator it(json.begin(), json.end(), basetype), end; it != end; ++it) {
      got.push_back((*it)[1]);
      numbered.push_back(std::to_string(numbered.size()));
    }
    EXPECT_EQ(got, c.basetypes) << c.which;
    EXPECT_EQ(oids(json), numbered) << c.which << ": numbered in order";
  }
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
  int inGerman = 0;
  for (int i = 0; i < 200; ++i)
    inGerman += meta("events", Preferences::OUTPUT_API, LOCALE_DE)
                   .find("desc=\"Zeitpunkt des Ereignisses\">Zeitstempel</PROPERTY>") !=
               std::string::npos;
  stop.store(true);
  other.join();
  EXPECT_EQ(inGerman, 200);
  de = saved;
  const std::string restored =
      std::string(">") + getConsoleLabel(tGStime_2Dstamp, tGSevents, LOCALE_DE) + "</PROPERTY>";
  EXPECT_NE(meta("events", Preferences::OUTPUT_API, LOCALE_DE).find(restored), std::string::npos);
  EXPECT_NE(meta("volumes", Preferences::OUTPUT_API, LOCALE_DE).find(">Durable ID</PROPERTY>"),
            std::string::npos)
      << "a field without German texts reads English";
}

} // namespace
