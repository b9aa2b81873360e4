// The registry's operations and messages, type and sort names, decoders,
// and spot checks of the registered catalogue.
#include "support/registry.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

// Each test's registrations and column defaults are undone after it.
class Registry : public testing::Test {
protected:
  TableMetaDataManager *registry() const { return scope_.registry(); }
  TableMetaData *table(const char *basetype) const {
    return registry()->getTable(strings::GS.toToken(basetype));
  }
  qeltest::ScopedRegistry scope_;
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

  EXPECT_EQ(getColumnType(tGSvolumes, 41), COLTYPE_STRING); // the last column
  EXPECT_EQ(getColumnType(tGSvolumes, 42), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSserial_2Dnumber, 0), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSstorage_2Dpools, 0), COLTYPE_STRING); // an overflow table
  EXPECT_EQ(registry()->getSlot(0), nullptr);
  EXPECT_EQ(registry()->getTable(tGSnone), nullptr);
  EXPECT_EQ(registry()->getTable(static_cast<GS_TokenValues>(0)), nullptr);
}

// The generated catalogue reaches the registry, and start-up registers it
// without a log line: keys, an overflow slot, property flags and qualifiers,
// shared arrays, decoders. The metadata golden files and documents pin the
// volumes and events properties and keys.
TEST_F(Registry, CatalogueSpotChecks) {
  EXPECT_EQ(qeltest::startupLog(), std::vector<std::string>{});
  auto registration = [&](const char *basetype) {
    TableMetaData *t = table(basetype);
    return std::to_string(t->getNumColumns()) + " " + t->getPrimaryKey() + " " + t->getParentBasetype() + " " +
           t->getParentKeyProp();
  };
  EXPECT_EQ(registration("events"), "10 event-id none none");
  EXPECT_EQ(registration("storage-pools"), "30 serial-number none none"); // an overflow slot
  // keyword type size flags sort qualifier, as the catalogue lists them
  auto property = [&](const char *basetype, int column) {
    const PropertyMetaData *d = table(basetype)->getPropertyDef(column);
    return std::string(strings::GS.toString(d->keywordId)) + " " + std::to_string(d->type) + " " +
           std::to_string(d->size) + " " + (d->print ? "P" : "") + (d->draw ? "D" : "") + (d->key ? "K" : "") +
           (d->trackWidth ? "W" : "") + (d->sort ? "S" : "") + " " + getSortType(d->sortType) + " " +
           strings::GS.toString(d->qualifierNameId) + "=" + strings::GS.toString(d->qualifierValueId);
  };
  EXPECT_EQ(property("drives", 7), "blocks " + std::to_string(COLTYPE_U64) + " 20 D string blocksize=512");
  EXPECT_EQ(property("storage-pools", 0), "name " + std::to_string(COLTYPE_STRING) + " 20 PDKWS string none=none");
  EXPECT_EQ(table("sas-status-controller-a")->getPropertyDef(0),
            table("sas-status-drawer")->getPropertyDef(0)) << "tables sharing an array share its properties";
  TableMetaData *events = table("events"), *cli = table("cli-parameters");
  EXPECT_EQ(events->getPropertyDef(5)->decoder, &decodeControllerIndex);
  EXPECT_EQ(events->getPropertyDef(6)->decoder, &decodeEventSeverity);
  EXPECT_EQ(cli->getPropertyDef(2)->decoder, &services::user::Preferences::decodeOutputType);
  EXPECT_EQ(cli->getPropertyDef(11)->decoder, &services::user::User::decodeExperience);
  EXPECT_EQ(cli->getPropertyDef(6)->decoder, &decodeLocaleCode);
}

// A basetype with a table index keeps its slot; one without gets an
// overflow slot of its own (logged), and a later registration of it
// replaces the same slot.
TEST_F(Registry, LastRegistrationWins) {
  static PropertyMetaData first[1] = {{tGSname, 10, COLTYPE_STRING, tGSnone, tGSnone, true,
                                       true, false, false, false, SORT_STRING, nullptr}};
  static PropertyMetaData second[2] = {first[0], first[0]};
  LogCapture log;
  int free = TableMetaDataManager::kIndexedSlots;
  while (registry()->getSlot(free))
    ++free;
  for (GS_TokenValues token : {tGSspares, tGSinitiators}) {
    registry()->addTable(token, first, 1, true, pGSnone, pGSnone, pGSnone);
    TableMetaData *replaced = registry()->getTable(token);
    registry()->addTable(token, second, 2, false, pGSname, pGSnone, pGSnone);
    delete replaced;
    ASSERT_NE(registry()->getTable(token), nullptr);
    EXPECT_EQ(registry()->getTable(token)->getNumColumns(), 2);
  }
  EXPECT_EQ(registry()->getSlot(QEL_GetTableID("spares")), table("spares"));
  EXPECT_EQ(registry()->getSlot(free), registry()->getTable(tGSinitiators));
  EXPECT_EQ(registry()->getSlot(free + 1), nullptr);
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
    EXPECT_EQ(after == before, c.registeredSize == kRefused) << "refused keeps the slot's table";
    if (after != before) {
      delete before;
      EXPECT_EQ(after->getPropertyDef(0)->size, c.registeredSize);
    }
  }
}

TEST_F(Registry, SetColumnPrint) {
  LogCapture log;
  // cache-settings lists controller-cache-parameters twice: only the first
  // occurrence changes.
  TableMetaData *cache = table("cache-settings");
  PropertyMetaData *one = cache->getPropertyDef(1), *two = cache->getPropertyDef(2);
  ASSERT_EQ(one->keywordId, two->keywordId);
  const auto flags = [](const PropertyMetaData *p) { return std::make_pair(bool(p->print), bool(p->draw)); };
  const auto second = flags(two);
  TableMetaDataManager::SetColumnPrint(tGScache_2Dsettings, one->keywordId, false, true);
  EXPECT_EQ(flags(one), std::make_pair(false, true));
  EXPECT_EQ(flags(two), second);

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

// Clients read the numbers: output types keep their order.
TEST(Decoders, WriteNumbersAndDisplayTexts) {
  using services::user::Preferences;
  struct Case {
    EnumDecoder decoder;
    unsigned value;
    const char *text;
  } cases[] = {
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
  utility::BufferStream codes(64);
  for (unsigned type : {Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API, Preferences::OUTPUT_API_BRIEF,
                        Preferences::OUTPUT_XML2, Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
                        Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG})
    Preferences::decodeOutputType(codes, type);
  EXPECT_STREQ(codes.pTail(), "01234567");
}

} // namespace
