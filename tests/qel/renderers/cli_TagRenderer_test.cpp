// Tag XML, byte for byte: row elements with and without index, unescaped
// values, units, qualifiers and the missing element name. The front end's
// golden files pin nesting and chains.
#include "support/fixture_tables.h"

namespace {

using qeltest::LogCapture;

class Tag : public qeltest::SessionTest {
protected:
  std::string print(QEL_DESC *d) {
    out_.Rewind();
    TagRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

// Values are not escaped; a storage size carries its units, a qualifier
// its own attribute.
TEST_F(Tag, ValuesUnitsQualifiersAndRowElements) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "a<b & \"c\"");
  QEL_FillColumnBlocks(&session_, d, 1, 0, "2048");
  EXPECT_EQ(print(d), "  <host-group-view-mappings>\n    <Name>a<b & \"c\"</Name>\n"
                      "    <Size units=\"MB\">1.05MB</Size>\n  </host-group-view-mappings>\n");
  QEL_DESC *drives = own(QEL_Create(&session_, tGSdrives, tGSnone, 1, 0));
  QEL_FillColumnU64(&session_, drives, 7, 0, "4096");
  EXPECT_NE(print(drives).find("    <blocks blocksize=\"512\">4096</blocks>\n"), std::string::npos);
  // Row elements come with an object name, indexed when there are several.
  EXPECT_EQ(print(own(userRows({"n1"}, tGSvolume))),
            "  <snmp-users>\n  <volume>\n    <Name>n1</Name>\n    <slot>1</slot>\n  </volume>\n  </snmp-users>\n");
  EXPECT_EQ(print(own(userRows({"n1", "n2"}, tGSvolume))),
            "  <snmp-users>\n  <volume index=\"0\">\n    <Name>n1</Name>\n    <slot>1</slot>\n  </volume>\n"
            "  <volume index=\"1\">\n    <Name>n2</Name>\n    <slot>2</slot>\n  </volume>\n  </snmp-users>\n");
}

// Catalogue basetypes all have element names; a table registered for a
// keyword outside the catalogue has none.
TEST_F(Tag, TableWithoutAnXmlName) {
  LogCapture log;
  tables_.add(tGSprimary_2Dip_2Daddress, qeltest::blocksTable, 2);
  EXPECT_EQ(print(own(QEL_Create(&session_, tGSprimary_2Dip_2Daddress, tGSnone, 0, 0))),
            "  <undefined>\n  </undefined>\n");
  EXPECT_EQ(log.texts(LogCapture::Route::Error),
            (std::vector<std::string>(2, "Table primary-ip-address does not have an XML name")));
  EXPECT_EQ(print(nullptr), "");
}

} // namespace
