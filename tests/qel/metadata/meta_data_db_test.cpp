// The registry's operations and messages, type and sort names, decoders,
// and the registered catalogue against its source files.
#include "support/library.h"

#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Registry : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::startLibrary(); }
  static TableMetaDataManager *registry() {
    return TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  }
  static TableMetaData *table(const char *basetype) {
    return registry()->getTable(strings::GS.toToken(basetype));
  }
};

TEST(TypeNames, DataTypesAndSortTypes) {
  std::string types, sorts;
  for (int t = 0; t <= 19; ++t) // 19 is past the last type
    types += std::string(getDataTypeStr(static_cast<ColumnDataType>(t))) + " ";
  for (int s = 0; s <= 6; ++s)
    sorts += std::string(getSortType(static_cast<SortType>(s))) + " ";
  EXPECT_EQ(types, "uint8 uint32 uint8 uint32 string object double string uint32 uint64 sint32 "
                   "string uint16 string string string string string string unknown ");
  EXPECT_EQ(sorts, "nosort diskslot datetime string integer size nosort ");
  EXPECT_STREQ(getDataTypeStr(COLTYPE_UNKNOWN), "unknown");
}

TEST_F(Registry, IndexAndColumnBounds) {
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(0)), 0);
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7627)), 0);
  BaseTypeLookupTable[7625] = 42; // the last slot is read like any other
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7626)), 42);
  BaseTypeLookupTable[7625] = 0;
  EXPECT_EQ(registry()->getTableIndex(tGSvolumes), 128);

  EXPECT_EQ(getColumnType(tGSvolumes, 41), COLTYPE_STRING); // the last column
  EXPECT_EQ(getColumnType(tGSvolumes, 42), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSserial_2Dnumber, 0), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSstorage_2Dpools, 0), COLTYPE_STRING); // an overflow table
  EXPECT_EQ(registry()->getSlot(0), nullptr);
  EXPECT_EQ(registry()->getTable(tGSnone), nullptr);
  EXPECT_EQ(registry()->getTable(static_cast<GS_TokenValues>(0)), nullptr);
}

// Every registration and every property against catalogue.txt and
// registrations.txt, read independently of the generator.
TEST_F(Registry, CatalogueMatchesItsSources) {
  std::map<std::string, std::vector<std::vector<std::string>>> arrays;
  std::ifstream cat(QEL_SOURCE_DIR "/qel/metadata/catalogue.txt");
  std::string line, current;
  while (std::getline(cat, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    std::istringstream ss(line);
    std::vector<std::string> words;
    for (std::string w; ss >> w;)
      words.push_back(w);
    if (line[0] != ' ')
      current = words.at(1);
    else
      arrays[current].push_back(words);
  }
  ASSERT_EQ(arrays.size(), 132u);

  const char *typeNames[19] = {"HEX8",   "HEX32",    "U8",   "U32",       "STRING",
                               "QEL",    "DOUBLE",   "ENUM", "INDEX",     "U64",
                               "I32",    "HEX_STRING", "U16", "STRING_N", "BLOCKS",
                               "DATETIME", "TIME",   "ENUMTOKEN", "BLOCKS2BYTES"};
  const char *sortNames[6] = {"nosort", "diskslot", "datetime", "string", "integer", "size"};
  std::ifstream regs(QEL_SOURCE_DIR "/qel/metadata/registrations.txt");
  std::set<unsigned> registered;
  int overflow = 0;
  std::set<const PropertyMetaData *> distinct;
  while (std::getline(regs, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    std::istringstream ss(line);
    std::string basetype, array, wbi, pkey, parent, parentKey;
    ss >> basetype >> array >> wbi >> pkey >> parent >> parentKey;
    SCOPED_TRACE(basetype);
    const unsigned token = strings::GS.toToken(basetype.c_str());
    registered.insert(token);
    if (QEL_GetTableID(basetype.c_str()) == 0) // an overflow slot
      ++overflow;
    TableMetaData *t = table(basetype.c_str());
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->getTableId(), token);
    EXPECT_EQ(t->isWBI(), wbi == "yes");
    EXPECT_EQ(t->getPrimaryKey(), pkey);
    EXPECT_EQ(t->getParentBasetype(), parent);
    EXPECT_EQ(t->getParentKeyProp(), parentKey);
    const auto &rows = arrays[array];
    ASSERT_EQ(t->getNumColumns(), static_cast<int>(rows.size()));
    std::set<std::string> keywords;
    for (int i = 0; i < t->getNumColumns(); ++i) {
      const PropertyMetaData *p = t->getPropertyDef(i);
      const auto &w = rows[static_cast<std::size_t>(i)];
      SCOPED_TRACE(w[0]);
      keywords.insert(w[0]);
      distinct.insert(p);
      EXPECT_STREQ(strings::GS.toString(p->keywordId), w[0].c_str());
      EXPECT_STREQ(typeNames[p->type], w[1].c_str());
      int size = w[2] == "MaxArrayNameLength"    ? 20
                 : w[2] == "MaxVolumeNameLength" ? 32
                                                 : std::stoi(w[2]);
      EXPECT_EQ(p->size, size);
      std::string flags = std::string(p->print ? "P" : "") + (p->draw ? "D" : "") +
                          (p->key ? "K" : "") + (p->trackWidth ? "W" : "") +
                          (p->sort ? "S" : "");
      EXPECT_EQ(flags.empty() ? "-" : flags, w[3]);
      EXPECT_STREQ(sortNames[p->sortType], w[4].c_str());
      EXPECT_EQ(p->decoder != nullptr, w[5] != "-");
      std::string q = w.size() == 7 ? w[6] : "none=none";
      EXPECT_EQ(std::string(strings::GS.toString(p->qualifierNameId)) + "=" +
                    strings::GS.toString(p->qualifierValueId),
                q);
    }
    EXPECT_TRUE(pkey == "none" || pkey == "singleton" || keywords.count(pkey))
        << "primary key is a property";
    EXPECT_TRUE(parentKey == "none" || keywords.count(parentKey)) << "parent key is a property";
  }
  EXPECT_EQ(registered.size(), 136u);
  // The catalogue's own overflow basetypes are expected: start-up is quiet.
  EXPECT_EQ(qeltest::startupLog(), std::vector<std::string>{});
  EXPECT_EQ(overflow, 11);
  for (unsigned t = 1; t <= 7626; ++t) // a table index without registration has no table
    EXPECT_TRUE(BaseTypeLookupTable[t - 1] == 0 || registered.count(t) ||
                !registry()->getTable(static_cast<GS_TokenValues>(t)))
        << t;
  EXPECT_EQ(distinct.size(), 1478u) << "tables sharing an array share its properties";

  // Which decoder a column names.
  TableMetaData *events = table("events"), *cli = table("cli-parameters");
  EXPECT_EQ(events->getPropertyDef(5)->decoder, &decodeControllerIndex);
  EXPECT_EQ(events->getPropertyDef(6)->decoder, &decodeEventSeverity);
  EXPECT_EQ(cli->getPropertyDef(2)->decoder, &services::user::Preferences::decodeOutputType);
  EXPECT_EQ(cli->getPropertyDef(11)->decoder, &services::user::User::decodeExperience);
  EXPECT_EQ(cli->getPropertyDef(6)->decoder, &decodeLocaleCode);
}

TEST_F(Registry, LastRegistrationWins) {
  static PropertyMetaData first[1] = {{tGSname, 10, COLTYPE_STRING, tGSnone, tGSnone, true,
                                       true, false, false, false, SORT_STRING, nullptr}};
  static PropertyMetaData second[2] = {first[0], first[0]};
  registry()->addTable(tGSspares, first, 1, true, pGSnone, pGSnone, pGSnone);
  TableMetaData *replaced = table("spares");
  registry()->addTable(tGSspares, second, 2, false, pGSname, pGSnone, pGSnone);
  delete replaced;
  ASSERT_NE(table("spares"), nullptr);
  EXPECT_EQ(table("spares")->getNumColumns(), 2);
  EXPECT_EQ(registry()->getSlot(QEL_GetTableID("spares")), table("spares"));

  // A basetype without a table index gets an overflow slot of its own, and a
  // later registration of it replaces the same slot.
  LogCapture log;
  registry()->addTable(tGSinitiators, first, 1, true, pGSnone, pGSnone, pGSnone);
  TableMetaData *a = registry()->getTable(tGSinitiators);
  registry()->addTable(tGSinitiators, second, 2, true, pGSnone, pGSnone, pGSnone);
  delete a;
  EXPECT_EQ(registry()->getTable(tGSinitiators)->getNumColumns(), 2);
  EXPECT_EQ(registry()->getSlot(TableMetaDataManager::kIndexedSlots + 11),
            registry()->getTable(tGSinitiators));
  EXPECT_EQ(registry()->getSlot(TableMetaDataManager::kIndexedSlots + 12), nullptr);
  const std::string logged = "Possibly missing QEL TABLE entry. BaseTypeLookupTable[" +
                             std::to_string(tGSinitiators) + "-1] (initiators) = 0";
  EXPECT_EQ(log.texts(Route::Log), (std::vector<std::string>{logged, logged}));
}

// A registration the descriptors cannot hold is refused, keeping the slot's
// table; a fixed-size property whose size would make the copy or the hex
// formatter read past the cell is clamped. Both are logged.
TEST_F(Registry, MalformedRegistrationsAreRefusedOrClamped) {
  const std::string column = "TableMetaDataManager::addTable: table spares, column serial-number: ";
  const std::string refused = "TableMetaDataManager::addTable: table spares: ";
  constexpr int kRefused = INT_MIN;
  struct Case {
    ColumnDataType type;
    int size, numColumns;
    bool withProperties;
    int registeredSize; // kRefused: not registered
    std::string message;
  } cases[] = {
      {COLTYPE_HEX_STRING, -2, 1, true, 0, column + "HEX_STRING size -2 is outside 0..510; 0 is used"},
      {COLTYPE_HEX_STRING, 600, 1, true, 510, column + "HEX_STRING size 600 is outside 0..510; 510 is used"},
      {COLTYPE_HEX_STRING, 510, 1, true, 510, ""},
      {COLTYPE_STRING_N, -5, 1, true, 0, column + "STRING_N size -5 is outside 0..2147483647; 0 is used"},
      {COLTYPE_STRING, -5, 1, true, -5, ""}, // only a display width
      {COLTYPE_STRING, 4, -1, true, kRefused, refused + "-1 columns; not registered"},
      {COLTYPE_STRING, 4, 65536, true, kRefused, refused + "65536 columns; not registered"},
      {COLTYPE_STRING, 4, 1, false, kRefused, refused + "1 columns without properties; not registered"},
  };
  static PropertyMetaData properties[std::size(cases)];
  for (const auto &c : cases) {
    SCOPED_TRACE(c.message);
    PropertyMetaData &p = properties[&c - cases];
    p = {tGSserial_2Dnumber, c.size, c.type, tGSnone, tGSnone, true, true, false, false, false,
         SORT_NONE, nullptr};
    LogCapture log;
    TableMetaData *before = table("spares");
    registry()->addTable(tGSspares, c.withProperties ? &p : nullptr, c.numColumns, true,
                         pGSnone, pGSnone, pGSnone);
    TableMetaData *after = table("spares");
    EXPECT_EQ(log.texts(Route::Error),
              c.message.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.message});
    if (c.registeredSize == kRefused) {
      EXPECT_EQ(after, before);
      continue;
    }
    ASSERT_NE(after, before);
    delete before;
    EXPECT_EQ(after->getPropertyDef(0)->size, c.registeredSize);
  }
}

TEST_F(Registry, SetColumnPrint) {
  LogCapture log;
  // cache-settings lists controller-cache-parameters twice: only the first
  // occurrence changes.
  TableMetaData *cache = table("cache-settings");
  PropertyMetaData *one = cache->getPropertyDef(1), *two = cache->getPropertyDef(2);
  ASSERT_EQ(one->keywordId, two->keywordId);
  const bool print2 = two->print, draw2 = two->draw;
  TableMetaDataManager::SetColumnPrint(tGScache_2Dsettings, one->keywordId, false, true);
  EXPECT_FALSE(one->print);
  EXPECT_TRUE(one->draw);
  EXPECT_EQ(two->print, print2);
  EXPECT_EQ(two->draw, draw2);

  // Arrays shared by several basetypes change for all of them.
  TableMetaDataManager::SetColumnPrint(tGSsas_2Dstatus_2Dcontroller_2Da, tGSphy, false, false);
  EXPECT_FALSE(table("sas-status-drawer")->getPropertyDef(3)->print);
  TableMetaDataManager::SetColumnPrint(tGSinitiator_2Dview_2Dmappings, tGSlun, true, false);
  EXPECT_FALSE(table("host-view-mappings")->getPropertyDef(2)->draw);
  EXPECT_TRUE(log.records.empty());

  TableMetaDataManager::SetColumnPrint(tGSevents, tGSrpm, true, true);
  TableMetaDataManager::SetColumnPrint(tGSsnmp_2Dusers, tGSrpm, true, true);
  TableMetaDataManager *saved = std::exchange(TableMetaDataManager::m_Instance, nullptr);
  TableMetaDataManager::SetColumnPrint(tGSevents, tGSmessage, true, true);
  TableMetaDataManager::m_Instance = saved;
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>{
                "TableMetaDataManager::SetColumnPrint: Column rpm not found in table events!",
                "TableMetaDataManager::SetColumnPrint: Could not find table snmp-users!",
                "TableMetaDataManager::SetColumnPrint: No TableMetaDataManager instance!"}));
}

TEST(Decoders, WriteNumbersAndDisplayTexts) {
  using services::user::Preferences;
  struct Case {
    EnumDecoder decoder;
    unsigned value;
    const char *text;
  } cases[] = {
      {Preferences::decodeOutputType, Preferences::OUTPUT_JSON, "5"},
      {Preferences::decodeOutputType, tGSvolumes, "-1"},
      {Preferences::decodeStorageUnit, Preferences::UNITS_GB, "3"},
      {services::scheduler::TaskRepVol::decodeSnapMode, tGSnew_2Dsnapshot, "0"},
      {decodeHealthStatus, 0, "OK"},       {decodeHealthStatus, 4, "N/A"},
      {decodeHealthStatus, 5, "Unknown"},  {decodeHealthStatus, 0xffffffffu, "Unknown"},
      {decodeLocaleCode, LOCALE_DE, "German"}, {decodeProgress, 42, "42%"},
      {decodeTemperatureValue, 37, "37 C"},
  };
  for (const auto &c : cases) {
    utility::BufferStream out(64);
    c.decoder(out, c.value);
    EXPECT_STREQ(out.pTail(), c.text) << c.value;
  }
}

} // namespace
