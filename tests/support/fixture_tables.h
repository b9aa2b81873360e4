// Test support: hand-made tables registered under basetypes that the
// catalogue leaves free, and a fixture that registers them for each test.
#ifndef QEL_TESTS_SUPPORT_FIXTURE_TABLES_H
#define QEL_TESTS_SUPPORT_FIXTURE_TABLES_H

#include "support/registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace qeltest {

/// Column i has ColumnDataType i. Text-like columns track their width;
/// STRING_N and HEX_STRING are 8 bytes wide.
inline PropertyMetaData typeTable[19] = {
    {tGSdrive_2Ddown_2Dcode, 4, COLTYPE_HEX8, tGSnone, tGSnone, true, true, false, false, false, SORT_STRING, nullptr},
    {tGSdebug_2Dflags, 10, COLTYPE_HEX32, tGSnone, tGSnone, true, true, false, false, false, SORT_STRING, nullptr},
    {tGSslot, 4, COLTYPE_U8, tGSnone, tGSnone, true, true, false, false, false, SORT_INTEGER, nullptr},
    {tGSiops, 8, COLTYPE_U32, tGSnone, tGSnone, true, true, false, false, false, SORT_INTEGER, nullptr},
    {tGSname, 10, COLTYPE_STRING, tGSnone, tGSnone, true, true, true, true, false, SORT_STRING, nullptr},
    {tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone, true, true, false, false, false, SORT_NONE, nullptr},
    {tGScpu_2Dload, 6, COLTYPE_DOUBLE, tGSnone, tGSnone, true, true, false, false, false, SORT_STRING, nullptr},
    {tGShealth, 10, COLTYPE_ENUM, tGSnone, tGSnone, true, true, false, true, false, SORT_STRING, &decodeHealthStatus},
    {tGSindex, 5, COLTYPE_INDEX, tGSnone, tGSnone, true, true, false, false, false, SORT_INTEGER, nullptr},
    {tGSnumber_2Dof_2Dreads, 12, COLTYPE_U64, tGSnone, tGSnone, true, true, false, true, false, SORT_STRING, nullptr},
    {tGSreturn_2Dcode, 6, COLTYPE_I32, tGSnone, tGSnone, true, true, false, false, false, SORT_INTEGER, nullptr},
    {tGSserial_2Dnumber, 8, COLTYPE_HEX_STRING, tGSnone, tGSnone, true, true, false, false, false, SORT_STRING, nullptr},
    {tGSdiskcount, 5, COLTYPE_U16, tGSnone, tGSnone, true, true, false, false, false, SORT_INTEGER, nullptr},
    {tGSvendor, 8, COLTYPE_STRING_N, tGSnone, tGSnone, true, true, false, false, false, SORT_STRING, nullptr},
    {tGSsize, 10, COLTYPE_BLOCKS, tGSnone, tGSnone, true, true, false, true, false, SORT_SIZE, nullptr},
    {tGStime_2Dstamp, 20, COLTYPE_DATETIME, tGSnone, tGSnone, true, true, false, false, false, SORT_DATETIME, nullptr},
    {tGStime, 10, COLTYPE_TIME, tGSnone, tGSnone, true, true, false, false, false, SORT_DATETIME, nullptr},
    {tGSoutput_2Dformat_2Dapi, 10, COLTYPE_ENUMTOKEN, tGSnone, tGSnone, true, true, false, true, false, SORT_STRING,
     &services::user::Preferences::decodeOutputType},
    {tGSdata_2Dread, 10, COLTYPE_BLOCKS2BYTES, tGSnone, tGSnone, true, true, false, true, false, SORT_STRING, nullptr},
};

using Preferences = services::user::Preferences;

/// One value of each type (no nested table) into \p row of a `spares`
/// descriptor, the texts with characters that need escaping.
inline void fillEveryType(services::user::Session &s, QEL_DESC *d, int row) {
  static const std::uint8_t bytes[8] = {0x50, 0x0c, 0x00, 0xff, 0x01, 0x00, 0x00, 0x7f};
  const void *texts[19] = {};
  texts[4] = "a\"b<c>", texts[9] = "18446744073709551615", texts[11] = bytes;
  texts[13] = "SEAGATE_", texts[14] = "2048", texts[18] = "4096";
  const std::uint32_t numbers[19] = {0xab, 0xdeadbeef, 7, 123456, 0, 0, 2, 1, 3, 0, 0xfffffffbu, 0,
                                     65535, 0, 0, 1700000000u, 3661, Preferences::OUTPUT_JSON, 0};
  for (int c = 0; c < 19; ++c)
    texts[c] ? QEL_FillColumn(&s, d, c, row, texts[c]) : QEL_FillColumn(&s, d, c, row, numbers[c]);
}

/// Every output type.
inline const Preferences::OutputType outputTypes[] = {
    Preferences::OUTPUT_CONSOLE,  Preferences::OUTPUT_API,       Preferences::OUTPUT_API_BRIEF,
    Preferences::OUTPUT_XML2,     Preferences::OUTPUT_XML2_BRIEF, Preferences::OUTPUT_JSON,
    Preferences::OUTPUT_JSON_ALT, Preferences::OUTPUT_TAG,       Preferences::OUTPUT_JSON_STD,
    Preferences::OUTPUT_NDJSON,   Preferences::OUTPUT_CSV,       Preferences::OUTPUT_TSV,
    Preferences::OUTPUT_HTML};

// Small tables for layout tests; their labels are the dictionary's.
#define QEL_FIXTURE_COLUMN(keyword, size, type, track, sort)                             \
  {keyword, size, type, tGSnone, tGSnone, true, true, false, track, false, sort, nullptr}
#define QEL_TEXT(keyword, size) QEL_FIXTURE_COLUMN(keyword, size, COLTYPE_STRING, false, SORT_STRING)
#define QEL_SLOT QEL_FIXTURE_COLUMN(tGSslot, 6, COLTYPE_U32, false, SORT_STRING)

/// `snmp-users`: Name (STRING 10), Slot (U32 6).
inline PropertyMetaData twoColumns[2] = {QEL_TEXT(tGSname, 10), QEL_SLOT};
/// `snap-shot-parameters`: Name, Vendor, Model (STRING 8 each).
inline PropertyMetaData threeColumns[3] = {QEL_TEXT(tGSname, 8), QEL_TEXT(tGSvendor, 8), QEL_TEXT(tGSmodel, 8)};
/// `managed-logs`: Name (STRING 10), Unhealthy Component (QEL), Slot (U32 6).
inline PropertyMetaData nestTable[3] = {
    QEL_TEXT(tGSname, 10), QEL_FIXTURE_COLUMN(tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, false, SORT_STRING), QEL_SLOT};
/// `copy-volume-status`: Timestamp (STRING 25, tracked), Description
/// (STRING 3), Slot (U32 6).
inline PropertyMetaData trackTable[3] = {
    QEL_FIXTURE_COLUMN(tGStime_2Dstamp, 25, COLTYPE_STRING, true, SORT_STRING), QEL_TEXT(tGSdescription, 3), QEL_SLOT};
/// `host-group-view-mappings`: Name (STRING 10), Size (BLOCKS 10).
inline PropertyMetaData blocksTable[2] = {QEL_TEXT(tGSname, 10),
                                          QEL_FIXTURE_COLUMN(tGSsize, 10, COLTYPE_BLOCKS, false, SORT_SIZE)};
#undef QEL_SLOT
#undef QEL_TEXT
#undef QEL_FIXTURE_COLUMN

/// The fixture tables, registered for the lifetime of the object.
class FixtureTables : public ScopedRegistry {
public:
  FixtureTables() {
    add(tGSspares, typeTable, 19);
    add(tGSsnmp_2Dusers, twoColumns, 2);
    add(tGSsnap_2Dshot_2Dparameters, threeColumns, 3);
    add(tGSmanaged_2Dlogs, nestTable, 3);
    add(tGScopy_2Dvolume_2Dstatus, trackTable, 3);
    add(tGShost_2Dgroup_2Dview_2Dmappings, blocksTable, 2);
  }
};

/// A session writing to a buffer. The descriptors given to own() are freed
/// after each test, and every library block must be back by then.
class SessionTest : public testing::Test {
protected:
  void SetUp() override { baseline_ = framework::Memory::liveAllocations(); }
  void TearDown() override {
    std::for_each(owned_.begin(), owned_.end(), QEL_Free);
    EXPECT_EQ(framework::Memory::liveAllocations(), baseline_) << "leaked blocks";
  }
  QEL_DESC *own(QEL_DESC *d) { return owned_.push_back(d), d; }
  /// `snmp-users` rows (names[r], r + 1) under object name \p name; not owned.
  QEL_DESC *userRows(const std::vector<std::string> &names, GS_TokenValues name = tGSnone,
                     std::uint8_t format = 0) {
    const int n = static_cast<int>(names.size());
    QEL_DESC *d = QEL_Create(&session_, tGSsnmp_2Dusers, name, n, format);
    for (int r = 0; r < n; ++r) {
      QEL_FillColumnString(&session_, d, 0, r, names[static_cast<std::size_t>(r)].c_str());
      QEL_FillColumnU32(&session_, d, 1, r, static_cast<unsigned>(r + 1));
    }
    return d;
  }
  /// `managed-logs` rows (alpha, \p nested, 7) and (beta, -, 8); owned.
  QEL_DESC *logRows(QEL_DESC *nested, GS_TokenValues name = tGSnone, std::uint8_t format = 0) {
    QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, name, 2, format));
    QEL_FillColumnQEL(&session_, d, 1, 0, nested);
    for (int r = 0; r < 2; ++r) {
      QEL_FillColumnString(&session_, d, 0, r, r ? "beta" : "alpha");
      QEL_FillColumnU32(&session_, d, 2, r, static_cast<unsigned>(7 + r));
    }
    return d;
  }

  FixtureTables tables_;
  long baseline_ = 0;
  utility::BufferStream out_{1 << 20};
  services::user::Session session_{out_};
  std::vector<QEL_DESC *> owned_;
};

} // namespace qeltest

#endif
