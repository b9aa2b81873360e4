// Test support: a hand-made table with one column of every data type,
// registered under a basetype that the catalogue leaves free (`spares`), so
// fills and renderers can be tested type by type.
#ifndef QEL_TESTS_SUPPORT_FIXTURE_TABLES_H
#define QEL_TESTS_SUPPORT_FIXTURE_TABLES_H

#include "support/library.h"

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

/// Starts the library and registers the fixture tables once per process.
inline void registerFixtureTables() {
  static std::once_flag once;
  std::call_once(once, [] {
    startLibrary();
    TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)
        ->addTable(tGSspares, typeTable, 19, true, pGSnone, pGSnone, pGSnone);
  });
}

} // namespace qeltest

#endif
