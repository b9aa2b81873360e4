// The registry's operations and messages, and the registered catalogue
// against its source files.
#include "support/library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
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
  const char *types[19] = {"uint8",  "uint32", "uint8",  "uint32", "string",
                           "object", "double", "string", "uint32", "uint64",
                           "sint32", "string", "uint16", "string", "string",
                           "string", "string", "string", "string"};
  for (int t = 0; t < 19; ++t)
    EXPECT_STREQ(getDataTypeStr(static_cast<ColumnDataType>(t)), types[t]) << t;
  EXPECT_STREQ(getDataTypeStr(COLTYPE_UNKNOWN), "unknown");
  EXPECT_STREQ(getDataTypeStr(static_cast<ColumnDataType>(19)), "unknown");

  const char *sorts[6] = {"nosort", "diskslot", "datetime", "string", "integer", "size"};
  for (int s = 0; s < 6; ++s)
    EXPECT_STREQ(getSortType(static_cast<SortType>(s)), sorts[s]) << s;
  EXPECT_STREQ(getSortType(static_cast<SortType>(9)), "nosort");
}

TEST_F(Registry, TableIndexBounds) {
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(0)), 0);
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7627)), 0);
  BaseTypeLookupTable[7625] = 42; // the last slot is read like any other
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7626)), 42);
  BaseTypeLookupTable[7625] = 0;
  EXPECT_EQ(registry()->getTableIndex(tGSvolumes), 128);
}

TEST_F(Registry, ColumnTypes) {
  EXPECT_EQ(getColumnType(tGSevents, 0), COLTYPE_DATETIME);
  EXPECT_EQ(getColumnType(tGScli_2Dparameters, 2), COLTYPE_ENUMTOKEN);
  EXPECT_EQ(getColumnType(tGSvolumes, 41), COLTYPE_STRING); // group-key
  EXPECT_EQ(getColumnType(tGSvolumes, 42), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSvolumes, -1), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSserial_2Dnumber, 0), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSstorage_2Dpools, 0), COLTYPE_STRING);
}

TEST_F(Registry, GivenTables) {
  TableMetaData *volumes = table("volumes");
  ASSERT_NE(volumes, nullptr);
  EXPECT_EQ(volumes->getNumColumns(), 42);
  EXPECT_EQ(volumes->getPropertyDef(3)->keywordId, tGSvolume_2Dname);
  EXPECT_EQ(volumes->getPropertyDef(3)->size,
            services::dom::Constants::MaxVolumeNameLength);
  EXPECT_EQ(volumes->getPropertyDef(1)->size,
            services::dom::Constants::MaxArrayNameLength);
  EXPECT_STREQ(volumes->getParentBasetype(), "volume-groups");
  EXPECT_STREQ(volumes->getParentKeyProp(), "volume-group");
  EXPECT_STREQ(volumes->getPrimaryKey(), "serial-number");
  EXPECT_TRUE(volumes->isWBI());

  TableMetaData *refresh = table("refresh_counters");
  ASSERT_NE(refresh, nullptr);
  EXPECT_EQ(refresh->getNumColumns(), 0);

  // The three tables given in full, column by column.
  struct Col {
    const char *keyword;
    ColumnDataType type;
    int size;
    const char *flags;
    SortType sort;
    bool decoder;
  };
  const Col events[] = {
      {"time-stamp", COLTYPE_DATETIME, 25, "PD", SORT_DATETIME, false},
      {"event-code", COLTYPE_STRING, 7, "PD", SORT_STRING, false},
      {"event-id", COLTYPE_STRING, 15, "PD", SORT_STRING, false},
      {"model", COLTYPE_STRING, 30, "PD", SORT_STRING, false},
      {"serial-number", COLTYPE_STRING, 60, "PD", SORT_STRING, false},
      {"controller", COLTYPE_ENUM, 12, "PD", SORT_STRING, true},
      {"severity", COLTYPE_ENUM, 50, "PD", SORT_STRING, true},
      {"message", COLTYPE_STRING, 700, "PD", SORT_STRING, false},
      {"additional-information", COLTYPE_STRING, 3600, "PD", SORT_STRING, false},
      {"recommended-action", COLTYPE_STRING, 7000, "PD", SORT_STRING, false}};
  const Col image[] = {
      {"image-key", COLTYPE_STRING, 65, "K", SORT_STRING, false},
      {"replication-volume-serial-number", COLTYPE_HEX_STRING, 32, "", SORT_STRING, false},
      {"image-serial-number", COLTYPE_HEX_STRING, 32, "PDK", SORT_STRING, false},
      {"replication-image-source", COLTYPE_STRING, 32, "PDKW", SORT_STRING, false},
      {"snapshot-serial", COLTYPE_HEX_STRING, 32, "PDK", SORT_STRING, false},
      {"snapshot-name", COLTYPE_STRING, 32, "PDW", SORT_STRING, false},
      {"creation-date-time", COLTYPE_DATETIME, 20, "PDS", SORT_DATETIME, false},
      {"image-details", COLTYPE_QEL, 1, "PD", SORT_NONE, false}};
  auto check = [](TableMetaData *t, const Col *cols, int n) {
    ASSERT_NE(t, nullptr);
    ASSERT_EQ(t->getNumColumns(), n);
    for (int i = 0; i < n; ++i) {
      const PropertyMetaData *p = t->getPropertyDef(i);
      SCOPED_TRACE(cols[i].keyword);
      std::string flags = std::string(p->print ? "P" : "") + (p->draw ? "D" : "") +
                          (p->key ? "K" : "") + (p->trackWidth ? "W" : "") +
                          (p->sort ? "S" : "");
      EXPECT_STREQ(strings::GS.toString(p->keywordId), cols[i].keyword);
      EXPECT_EQ(p->type, cols[i].type);
      EXPECT_EQ(p->size, cols[i].size);
      EXPECT_EQ(flags, cols[i].flags);
      EXPECT_EQ(p->sortType, cols[i].sort);
      EXPECT_EQ(p->decoder != nullptr, cols[i].decoder);
      EXPECT_EQ(p->qualifierNameId, tGSnone);
      EXPECT_EQ(p->qualifierValueId, tGSnone);
    }
  };
  check(table("events"), events, 10);
  check(table("replication-image"), image, 8);
  EXPECT_EQ(table("events")->getPropertyDef(5)->decoder, &decodeControllerIndex);
  EXPECT_EQ(table("events")->getPropertyDef(6)->decoder, &decodeEventSeverity);
  TableMetaData *cli = table("cli-parameters");
  ASSERT_NE(cli, nullptr);
  EXPECT_EQ(cli->getPropertyDef(2)->decoder, &services::user::Preferences::decodeOutputType);
  EXPECT_EQ(cli->getPropertyDef(11)->decoder, &services::user::User::decodeExperience);
  EXPECT_EQ(cli->getPropertyDef(6)->decoder, &decodeLocaleCode);
  EXPECT_EQ(cli->getPropertyDef(7)->sortType, SORT_INTEGER);
  EXPECT_FALSE(cli->getPropertyDef(12)->print);
}

// Every registration and every property against catalogue.txt and
// registrations.txt, read independently of the generator.
TEST_F(Registry, CatalogueMatchesItsSources) {
  std::map<std::string, std::vector<std::vector<std::string>>> arrays;
  {
    std::ifstream in(QEL_SOURCE_DIR "/qel/metadata/catalogue.txt");
    std::string line, current;
    while (std::getline(in, line)) {
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
  }
  ASSERT_EQ(arrays.size(), 132u);

  std::ifstream in(QEL_SOURCE_DIR "/qel/metadata/registrations.txt");
  std::string line;
  int registrations = 0;
  std::set<const PropertyMetaData *> distinct;
  std::map<std::string, int> typeCount;
  int decoders = 0, qualifiers = 0;
  const char *typeNames[19] = {"HEX8", "HEX32", "U8", "U32", "STRING", "QEL", "DOUBLE",
                               "ENUM", "INDEX", "U64", "I32", "HEX_STRING", "U16",
                               "STRING_N", "BLOCKS", "DATETIME", "TIME", "ENUMTOKEN",
                               "BLOCKS2BYTES"};
  const char *sortNames[6] = {"nosort", "diskslot", "datetime", "string", "integer", "size"};
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    std::istringstream ss(line);
    std::string basetype, array, wbi, pkey, parent, parentKey;
    ss >> basetype >> array >> wbi >> pkey >> parent >> parentKey;
    SCOPED_TRACE(basetype);
    ++registrations;
    TableMetaData *t = table(basetype.c_str());
    ASSERT_NE(t, nullptr);
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
      EXPECT_STREQ(strings::GS.toString(p->keywordId), w[0].c_str());
      EXPECT_STREQ(typeNames[p->type], w[1].c_str());
      int size = w[2] == "MaxArrayNameLength"    ? services::dom::Constants::MaxArrayNameLength
                 : w[2] == "MaxVolumeNameLength" ? services::dom::Constants::MaxVolumeNameLength
                                                 : std::stoi(w[2]);
      EXPECT_EQ(p->size, size);
      std::string flags = std::string(p->print ? "P" : "") + (p->draw ? "D" : "") +
                          (p->key ? "K" : "") + (p->trackWidth ? "W" : "") +
                          (p->sort ? "S" : "");
      EXPECT_EQ(flags.empty() ? "-" : flags, w[3]);
      EXPECT_STREQ(sortNames[p->sortType], w[4].c_str());
      EXPECT_EQ(p->decoder != nullptr, w[5] != "-");
      if (w.size() == 7) {
        std::string q = std::string(strings::GS.toString(p->qualifierNameId)) + "=" +
                        strings::GS.toString(p->qualifierValueId);
        EXPECT_EQ(q, w[6]);
      } else {
        EXPECT_EQ(p->qualifierNameId, tGSnone);
        EXPECT_EQ(p->qualifierValueId, tGSnone);
      }
      if (distinct.insert(p).second) {
        ++typeCount[typeNames[p->type]];
        decoders += p->decoder != nullptr;
        qualifiers += p->qualifierNameId != tGSnone;
        if (p->type == COLTYPE_QEL) {
          EXPECT_TRUE(p->size == 1 || (array == "gQdbShowBackingStores" && p->size == 10));
        }
      }
    }
    if (pkey != "none" && pkey != "singleton") {
      EXPECT_TRUE(keywords.count(pkey)) << "primary key is a property";
    }
    if (parentKey != "none") {
      EXPECT_TRUE(keywords.count(parentKey)) << "parent key is a property";
    }
  }
  EXPECT_EQ(registrations, 136);
  EXPECT_EQ(distinct.size(), 1478u);
  std::map<std::string, int> expected = {
      {"STRING", 643}, {"ENUM", 293},       {"U32", 163},      {"U64", 71},
      {"QEL", 67},     {"BLOCKS2BYTES", 52}, {"U8", 44},        {"BLOCKS", 43},
      {"DATETIME", 42}, {"HEX_STRING", 25},  {"HEX32", 11},     {"U16", 10},
      {"ENUMTOKEN", 9}, {"STRING_N", 3},     {"I32", 2}};
  EXPECT_EQ(typeCount, expected);
  EXPECT_EQ(decoders, 301);
  EXPECT_EQ(qualifiers, 4);
  // The one ENUM without a decoder: the hidden second scsi-product-id.
  const PropertyMetaData *scsi = table("sysinfo")->getPropertyDef(13);
  EXPECT_EQ(scsi->type, COLTYPE_ENUM);
  EXPECT_EQ(scsi->decoder, nullptr);
}

TEST_F(Registry, UnregisteredAndOverflowBasetypes) {
  for (const char *name : {"spares", "snmp-users", "managed-logs", "host-group-view-mappings",
                           "snap-shot-parameters", "copy-volume-status"}) {
    EXPECT_NE(QEL_GetTableID(name), 0) << name;
    EXPECT_EQ(table(name), nullptr) << name;
  }
  struct Overflow {
    const char *name;
    int columns;
  } overflow[] = {{"configured-storage", 12}, {"paged-statistics", 9},
                  {"storage-pool-components", 19}, {"storage-pools", 30},
                  {"storage-status", 19}, {"storage-pool-status", 19},
                  {"storage-tier-status", 14}, {"tier-summary", 5},
                  {"tier-hist-statistics", 21}, {"pool-summary", 3},
                  {"pool-hist-statistics", 15}};
  std::vector<std::string> expectedLog;
  for (const auto &o : overflow) {
    SCOPED_TRACE(o.name);
    GS_TokenValues token = strings::GS.toToken(o.name);
    EXPECT_EQ(registry()->getTableIndex(token), 0);
    EXPECT_EQ(QEL_GetTableID(o.name), 0);
    TableMetaData *t = table(o.name);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->getTableId(), token);
    EXPECT_EQ(t->getNumColumns(), o.columns);
    expectedLog.push_back("Possibly missing QEL TABLE entry. BaseTypeLookupTable[" +
                          std::to_string(token) + "-1] (" + o.name + ") = 0");
  }
  // Start-up logs each of them once, in registration order.
  std::vector<std::string> logged = qeltest::startupLog();
  std::sort(logged.begin(), logged.end());
  std::sort(expectedLog.begin(), expectedLog.end());
  EXPECT_EQ(logged, expectedLog);
  EXPECT_EQ(registry()->getSlot(0), nullptr);
  EXPECT_EQ(registry()->getTable(tGSnone), nullptr);
  EXPECT_EQ(registry()->getTable(static_cast<GS_TokenValues>(0)), nullptr);
}

TEST_F(Registry, LastRegistrationWins) {
  static PropertyMetaData first[1] = {{tGSname, 10, COLTYPE_STRING, tGSnone, tGSnone,
                                       true, true, false, false, false, SORT_STRING, nullptr}};
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
  EXPECT_EQ(log.texts(Route::Log).size(), 2u);
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
  TableMetaDataManager::SetColumnPrint(tGSspares, tGSrpm, true, true);
  TableMetaDataManager *saved = TableMetaDataManager::m_Instance.exchange(nullptr);
  TableMetaDataManager::SetColumnPrint(tGSevents, tGSmessage, true, true);
  TableMetaDataManager::m_Instance.store(saved);
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>{
                "TableMetaDataManager::SetColumnPrint: Column rpm not found in table events!",
                "TableMetaDataManager::SetColumnPrint: Could not find table spares!",
                "TableMetaDataManager::SetColumnPrint: No TableMetaDataManager instance!"}));
}

TEST_F(Registry, OneInstanceWithTheLatestLocale) {
  TableMetaDataManager *a = TableMetaDataManager::getTableMetaDataManager(LOCALE_DE);
  TableMetaDataManager *b = TableMetaDataManager::getTableMetaDataManager(LOCALE_KO);
  EXPECT_EQ(a, b);
  EXPECT_EQ(b->getLocale(), LOCALE_KO);
  b->setLocale(LOCALE_EN);
  EXPECT_EQ(a->getLocale(), LOCALE_EN);
}

std::string decoded(EnumDecoder decoder, unsigned value) {
  utility::BufferStream out(64);
  decoder(out, value);
  return out.pTail();
}

TEST(Decoders, LibraryDecodersWriteNumbers) {
  using services::user::Preferences;
  struct Case {
    EnumDecoder decoder;
    unsigned token;
    const char *text;
  } cases[] = {
      {Preferences::decodeOutputType, Preferences::OUTPUT_JSON, "5"},
      {Preferences::decodeOutputType, tGSvolumes, "-1"},
      {Preferences::decodeOutputMode, tGSenabled, "1"},
      {Preferences::decodeStorageUnit, Preferences::UNITS_GB, "3"},
      {Preferences::decodeTemperature, tGScelsius, "0"},
      {services::user::User::decodeExperience, tGSadvanced, "1"},
      {services::scheduler::TaskRepVol::decodeSnapMode, tGSnew_2Dsnapshot, "0"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(decoded(c.decoder, c.token), c.text) << c.token;
}

TEST(Decoders, PlatformDecodersWriteDisplayTexts) {
  struct Case {
    EnumDecoder decoder;
    unsigned value;
    const char *text;
  } cases[] = {
      {decodeHealthStatus, 0, "OK"},        {decodeHealthStatus, 2, "Fault"},
      {decodeHealthStatus, 4, "N/A"},       {decodeHealthStatus, 5, "Unknown"},
      {decodeEnabledParam, 0, "Disabled"},  {decodeEnabledParam, 1, "Enabled"},
      {decodeLocaleCode, LOCALE_DE, "German"}, {decodeProgress, 42, "42%"},
      {decodeTemperatureValue, 37, "37 C"}, {decodeHealthStatus, 0xffffffffu, "Unknown"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(decoded(c.decoder, c.value), c.text) << c.value;
}

} // namespace
