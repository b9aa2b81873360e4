// Metadata documents: the JSON and tag forms, empty and unknown tables, the
// table selection and the requesting session's locale.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using Preferences = services::user::Preferences;

class Meta : public testing::Test {
protected:
  std::string meta(const char *which, Preferences::OutputType type = Preferences::OUTPUT_API) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    EXPECT_EQ(cli_metaHandler(&session_, which), 0);
    return out_.pTail();
  }
  // The quoted values that follow each \p open (which ends in a quote), in
  // order.
  static std::vector<std::string> values(const std::string &text, const std::string &open) {
    std::vector<std::string> out;
    for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
      at += open.size();
      out.push_back(text.substr(at, text.find('"', at) - at));
    }
    return out;
  }

  qeltest::FixtureTables tables_;
  utility::BufferStream out_{4 << 20};
  services::user::Session session_{out_};
};

const char kDecl[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

// The XML property bytes are pinned by the end-to-end golden metadata
// document; here: the JSON form, and the XML types and tag form around them.
TEST_F(Meta, JsonScriptAndTheOtherFamilies) {
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
  EXPECT_EQ(meta("snmp-users", Preferences::OUTPUT_JSON_ALT), meta("snmp-users", Preferences::OUTPUT_JSON));
  const std::string xml = meta("events"), tag = meta("events", Preferences::OUTPUT_TAG);
  EXPECT_EQ(values(tag, "<PROPERTY name=\"").size(), 13u);
  EXPECT_EQ(xml, std::string(kDecl) + "<RESPONSE>\n<OBJECT name=\"title\" basetype=\"events\">\n" +
                     tag + "</OBJECT>\n</RESPONSE>\n")
      << "the tag form is the properties alone";
  for (auto type : {Preferences::OUTPUT_XML2, Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2_BRIEF})
    EXPECT_EQ(meta("events", type), xml);
  EXPECT_EQ(meta("snmp-users", Preferences::OUTPUT_CONSOLE) + meta("all", Preferences::OUTPUT_CONSOLE), "");
}

// Companions follow their property; schedules ends with the nested task
// column, so no comma follows the last rendered property. Unknown tables
// are left out; a keyword's case may differ from its constructor name.
TEST_F(Meta, JsonCompanionsTrailersEmptyAndUnknownTables) {
  using testing::IsSubstring;
  EXPECT_PRED_FORMAT2(IsSubstring,
                      "    new APIProp({name:\"time-stamp\",value:\"Timestamp\",type:\"string\","
                      "size:\"25\",draw:\"true\",sort:\"false\",sortType:\"datetime\",key:\"false\","
                      "abbr:\"\",desc:\"Date and time when the event occurred\"}),\n"
                      "    new APIProp({name:\"time-stamp-numeric\",value:\"Timestamp\",type:\"uint32\","
                      "size:\"25\",draw:\"false\",sort:\"false\",sortType:\"integer\",key:\"false\","
                      "abbr:\"\",desc:\"Date and time when the event occurred\"}),\n",
                      meta("events", Preferences::OUTPUT_JSON));
  EXPECT_PRED_FORMAT2(IsSubstring,
                      "\n    ], {basetype:\"volumes\",name:\"meta\",oid:\"0\",primaryKey:\"serial-number\","
                      "parentBasetype:\"volume-groups\",parentKeyProp:\"volume-group\"})\n])\n",
                      meta("volumes", Preferences::OUTPUT_JSON));
  std::string json = meta("schedules", Preferences::OUTPUT_JSON);
  EXPECT_PRED_FORMAT2(IsSubstring, "desc:\"\"})\n    ], {basetype:\"schedules\"", json);
  EXPECT_EQ(values(json, "new APIProp({name:\"").size(), 7u); // six properties and one companion
  EXPECT_EQ(meta("refresh_counters", Preferences::OUTPUT_JSON),
            "new APIData([\n  new APIRefreshCounters([\n\n    ], {basetype:\"refresh_counters\","
            "name:\"meta\",oid:\"0\",primaryKey:\"none\",parentBasetype:\"none\",parentKeyProp:\"none\"})\n])\n");
  EXPECT_EQ(meta("refresh_counters"), std::string(kDecl) + "<RESPONSE>\n<OBJECT name=\"title\" "
                                                           "basetype=\"refresh_counters\">\n</OBJECT>\n</RESPONSE>\n");
  EXPECT_PRED_FORMAT2(IsSubstring, "<OBJECT name=\"title\" basetype=\"show-other-mc-status\">",
                      meta("show-other-MC-status"));
  json = meta("show-other-MC-status", Preferences::OUTPUT_JSON);
  EXPECT_PRED_FORMAT2(IsSubstring, "  new APIShowOtherMCStatus([\n", json);
  EXPECT_PRED_FORMAT2(IsSubstring, "{basetype:\"show-other-MC-status\",name:\"meta\"", json);
  EXPECT_EQ(meta("nosuch"), std::string(kDecl) + "<RESPONSE>\n</RESPONSE>\n");
  EXPECT_EQ(meta("nosuch", Preferences::OUTPUT_JSON), "new APIData([\n])\n");
}

TEST_F(Meta, SelectionOfTables) {
  std::vector<std::string> slots, wbiSlots;
  for (int slot = 0; slot < TableMetaDataManager::kSlots; ++slot)
    if (TableMetaData *t = tables_.registry()->getSlot(slot)) {
      slots.push_back(std::to_string(slot));
      if (t->isWBI())
        wbiSlots.push_back(std::to_string(slot));
    }
  ASSERT_LT(wbiSlots.size(), slots.size());
  EXPECT_EQ(values(meta("wBi", Preferences::OUTPUT_JSON), "oid:\""), wbiSlots);
  for (const char *which : {"all", "All", static_cast<const char *>(nullptr)})
    EXPECT_EQ(values(meta(which, Preferences::OUTPUT_JSON), "oid:\""), slots) << (which ? which : "null");
  struct Case { const char *which; std::vector<std::string> basetypes; } cases[] = {
      {"events,nosuch,volumes", {"events", "volumes"}}, {"events, volumes", {"events"}},
      {"events,,volumes", {"events", "volumes"}},       {"volumes,volumes", {"volumes", "volumes"}},
      {"Events", {}}, {"spares,storage-pools", {"spares", "storage-pools"}}, // an overflow table, by name
  };
  for (const auto &c : cases) {
    const std::string json = meta(c.which, Preferences::OUTPUT_JSON);
    EXPECT_EQ(values(json, "basetype:\""), c.basetypes) << c.which;
    std::vector<std::string> numbered{"0", "1"};
    numbered.resize(c.basetypes.size());
    EXPECT_EQ(values(json, "oid:\""), numbered) << c.which << ": numbered in order";
  }
}

// The labels follow the requesting session's locale even while other threads
// keep setting the registry's shared locale to English.
TEST_F(Meta, LabelsInTheSessionsLocaleWhileOthersUseEnglish) {
  session_.getPreferences().setLocale(LOCALE_DE);
  const std::string alone = meta("all");
  ASSERT_PRED_FORMAT2(testing::IsSubstring, ">Name des virtuellen Datenträgers</PROPERTY>", alone);
  std::atomic<bool> stop{false};
  std::thread other([&] {
    while (!stop.load())
      TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  });
  int same = 0;
  for (int i = 0; i < 20; ++i)
    same += meta("all") == alone;
  stop.store(true);
  other.join();
  EXPECT_EQ(same, 20);
}

} // namespace
