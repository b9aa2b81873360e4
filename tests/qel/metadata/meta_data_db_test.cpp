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
  TableMetaData *table(const char *basetype) const { return registry()->getTable(strings::GS.toToken(basetype)); }
  qeltest::ScopedRegistry scope_;
};

// Start-up registers the generated catalogue without a log line, keys
// included; storage-pools has no table index and lives in an overflow slot.
// The goldens pin the properties, qualifiers and decoders of the catalogue.
// Lookups outside the token space or a table's columns find nothing.
TEST_F(Registry, CatalogueKeysAndBounds) {
  EXPECT_EQ(qeltest::startupLog(), std::vector<std::string>{});
  for (const auto &[basetype, expected] : {std::pair<const char *, const char *>{"events", "10 event-id none none"},
                                          {"storage-pools", "30 serial-number none none"}}) {
    TableMetaData *t = table(basetype);
    ASSERT_NE(t, nullptr) << basetype;
    EXPECT_EQ(std::to_string(t->getNumColumns()) + " " + t->getPrimaryKey() + " " + t->getParentBasetype() +
                  " " + t->getParentKeyProp(), expected);
  }
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(0)), 0);
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7627)), 0);
  BaseTypeLookupTable[7625] = 42; // the last slot is read like any other
  EXPECT_EQ(registry()->getTableIndex(static_cast<GS_TokenValues>(7626)), 42);
  BaseTypeLookupTable[7625] = 0;
  EXPECT_EQ(getColumnType(tGSvolumes, 41), COLTYPE_STRING); // the last column
  EXPECT_EQ(getColumnType(tGSvolumes, 42), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSserial_2Dnumber, 0), COLTYPE_UNKNOWN);
  EXPECT_EQ(getColumnType(tGSstorage_2Dpools, 0), COLTYPE_STRING);
  EXPECT_TRUE(!registry()->getSlot(0) && !registry()->getTable(tGSnone) &&
              !registry()->getTable(static_cast<GS_TokenValues>(0)));
}

// A registration replaces the basetype's table; one the descriptors cannot
// hold is refused, keeping the slot's table; a fixed-size property whose
// size would make the copy or the hex formatter read past the cell is
// clamped; a basetype without a table index gets an overflow slot of its
// own, which a later registration of it replaces. All but the good ones are
// logged.
TEST_F(Registry, RegistrationsReplaceRefuseOrClamp) {
  const std::string column = "TableMetaDataManager::addTable: table spares, column serial-number: ";
  const std::string refused = "TableMetaDataManager::addTable: table spares: ";
  const std::string missing = "Possibly missing QEL TABLE entry. BaseTypeLookupTable[" +
                              std::to_string(tGSinitiators) + "-1] (initiators) = 0";
  constexpr int kRefused = INT_MIN;
  // registeredSize kRefused: not registered; message: route Error for
  // spares, Log for initiators
  struct Case { GS_TokenValues token; ColumnDataType type; int size, numColumns; bool withProperties;
                int registeredSize; std::string message; } cases[] = {
      {tGSspares, COLTYPE_HEX_STRING, -2, 1, true, 0, column + "HEX_STRING size -2 is outside 0..510; 0 is used"},
      {tGSspares, COLTYPE_HEX_STRING, 600, 1, true, 510, column + "HEX_STRING size 600 is outside 0..510; 510 is used"},
      {tGSspares, COLTYPE_HEX_STRING, 510, 1, true, 510, ""},
      {tGSspares, COLTYPE_STRING_N, -5, 1, true, 0, column + "STRING_N size -5 is outside 0..2147483647; 0 is used"},
      {tGSspares, COLTYPE_STRING, -5, 2, true, -5, ""}, // only a display width
      {tGSspares, COLTYPE_STRING, 4, -1, true, kRefused, refused + "-1 columns; not registered"},
      {tGSspares, COLTYPE_STRING, 4, 65536, true, kRefused, refused + "65536 columns; not registered"},
      {tGSspares, COLTYPE_STRING, 4, 1, false, kRefused, refused + "1 columns without properties; not registered"},
      {tGSinitiators, COLTYPE_STRING, 10, 1, true, 10, missing},
      {tGSinitiators, COLTYPE_STRING, 12, 2, true, 12, missing},
  };
  int free = TableMetaDataManager::kIndexedSlots;
  while (registry()->getSlot(free))
    ++free;
  static PropertyMetaData properties[std::size(cases)][2];
  for (const auto &c : cases) {
    SCOPED_TRACE(c.message);
    PropertyMetaData *p = properties[&c - cases];
    p[0] = p[1] = {tGSserial_2Dnumber, c.size, c.type, tGSnone, tGSnone, true, true, false, false, false,
                   SORT_NONE, nullptr};
    LogCapture log;
    TableMetaData *before = registry()->getTable(c.token);
    registry()->addTable(c.token, c.withProperties ? p : nullptr, c.numColumns, true, pGSnone, pGSnone, pGSnone);
    TableMetaData *after = registry()->getTable(c.token);
    EXPECT_EQ(log.texts(c.token == tGSspares ? Route::Error : Route::Log),
              c.message.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.message});
    EXPECT_EQ(after == before, c.registeredSize == kRefused) << "refused keeps the slot's table";
    if (after != before) {
      delete before;
      EXPECT_EQ(std::make_pair(after->getNumColumns(), after->getPropertyDef(0)->size),
                std::make_pair(c.numColumns, c.registeredSize));
    }
  }
  EXPECT_EQ(registry()->getSlot(QEL_GetTableID("spares")), table("spares"));
  EXPECT_EQ(registry()->getSlot(free), table("initiators"));
  EXPECT_EQ(registry()->getSlot(free + 1), nullptr);
}

// Only the first occurrence of a keyword changes (cache-settings lists
// controller-cache-parameters twice); an array shared by several basetypes
// changes for all of them; bad requests are logged.
TEST_F(Registry, SetColumnPrint) {
  LogCapture log;
  PropertyMetaData *one = table("cache-settings")->getPropertyDef(1), *two = table("cache-settings")->getPropertyDef(2);
  ASSERT_EQ(one->keywordId, two->keywordId);
  const auto flags = [](const PropertyMetaData *p) { return std::make_pair(bool(p->print), bool(p->draw)); };
  const auto second = flags(two);
  TableMetaDataManager::SetColumnPrint(tGScache_2Dsettings, one->keywordId, false, true);
  EXPECT_EQ(flags(one), std::make_pair(false, true));
  EXPECT_EQ(flags(two), second);
  TableMetaDataManager::SetColumnPrint(tGSsas_2Dstatus_2Dcontroller_2Da, tGSphy, false, false);
  TableMetaDataManager::SetColumnPrint(tGSinitiator_2Dview_2Dmappings, tGSlun, true, false);
  EXPECT_EQ(flags(table("sas-status-drawer")->getPropertyDef(3)), std::make_pair(false, false));
  EXPECT_EQ(flags(table("host-view-mappings")->getPropertyDef(2)), std::make_pair(true, false));
  EXPECT_TRUE(log.records.empty());
  TableMetaDataManager::SetColumnPrint(tGSevents, tGSrpm, true, true);
  TableMetaDataManager::SetColumnPrint(tGSsnmp_2Dusers, tGSrpm, true, true);
  TableMetaDataManager *saved = std::exchange(TableMetaDataManager::m_Instance, nullptr);
  TableMetaDataManager::SetColumnPrint(tGSevents, tGSmessage, true, true);
  TableMetaDataManager::m_Instance = saved;
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>{"TableMetaDataManager::SetColumnPrint: Column rpm not found in table events!",
                                      "TableMetaDataManager::SetColumnPrint: Could not find table snmp-users!",
                                      "TableMetaDataManager::SetColumnPrint: No TableMetaDataManager instance!"}));
}

// The type and sort names the metadata documents write, with a fallback
// past the last type (19) and sort (6). Decoders write the numbers clients
// read (output types keep their order) and display texts; a value a decoder
// does not list reads "Unknown" unless the decoder has a fallback format.
TEST(Names, TypesSortsAndDecoders) {
  std::string names;
  for (int t = 0; t <= 19; ++t)
    names += std::string(getDataTypeStr(static_cast<ColumnDataType>(t))) + " ";
  for (int s = 0; s <= 6; ++s)
    names += std::string(getSortType(static_cast<SortType>(s))) + " ";
  EXPECT_EQ(names, "uint8 uint32 uint8 uint32 string object double string uint32 uint64 sint32 string uint16 "
                   "string string string string string string unknown nosort diskslot datetime string integer "
                   "size nosort ");
  using services::user::Preferences;
  utility::BufferStream out(256);
  auto decode = [&out](EnumDecoder decoder, unsigned value) { decoder(out, value), out.PutC('|'); };
  for (unsigned type : {Preferences::OUTPUT_CONSOLE, Preferences::OUTPUT_API, Preferences::OUTPUT_API_BRIEF,
                        Preferences::OUTPUT_XML2, Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
                        Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG, Preferences::OutputType(tGSvolumes)})
    decode(Preferences::decodeOutputType, type);
  decode(Preferences::decodeStorageUnit, Preferences::UNITS_GB);
  decode(services::scheduler::TaskRepVol::decodeSnapMode, tGSnew_2Dsnapshot);
  for (unsigned health : {4u, 5u, 0xffffffffu})
    decode(decodeHealthStatus, health);
  decode(decodeProgress, 42);
  decode(decodeTemperatureValue, 37);
  EXPECT_STREQ(out.pTail(), "0|1|2|3|4|5|6|7|-1|3|0|N/A|Unknown|Unknown|42%|37 C|");
}

} // namespace
