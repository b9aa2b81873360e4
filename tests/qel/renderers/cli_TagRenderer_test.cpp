// Tag XML, byte for byte: the table element around the chain, row elements
// with and without index, unescaped values, units, qualifiers and nesting.
#include "support/fixture_tables.h"

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Tag : public qeltest::SessionTest {
protected:
  std::string print(QEL_DESC *d) {
    out_.Rewind();
    TagRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

TEST_F(Tag, ValuesUnitsAndQualifiers) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "a<b & \"c\"");
  QEL_FillColumnBlocks(&session_, d, 1, 0, "2048");
  EXPECT_EQ(print(d), "  <host-group-view-mappings>\n"
                      "    <Name>a<b & \"c\"</Name>\n" // not escaped
                      "    <Size units=\"MB\">1.05MB</Size>\n"
                      "  </host-group-view-mappings>\n");
  // With a qualifier, its attribute replaces the storage size's units.
  PropertyMetaData &size = qeltest::blocksTable[1];
  size.qualifierNameId = tGSblocksize;
  size.qualifierValueId = tGS512;
  QEL_DESC *q = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  size.qualifierNameId = size.qualifierValueId = tGSnone;
  QEL_FillColumnBlocks(&session_, q, 1, 0, "2048");
  EXPECT_NE(print(q).find("    <Size blocksize=\"512\">1.05MB</Size>\n"), std::string::npos);
}

// Row elements come with an object name, indexed when there are several. A
// nested table is a complete table element at holder level + 6; a linked
// table of another basetype stays inside the first table's element.
TEST_F(Tag, RowElementsNestedTablesAndChains) {
  EXPECT_EQ(print(own(userRows({"n1"}, tGSvolume))),
            "  <snmp-users>\n  <volume>\n    <Name>n1</Name>\n    <slot>1</slot>\n"
            "  </volume>\n  </snmp-users>\n");
  QEL_DESC *d = logRows(userRows({"n1"}), tGSvolume);
  QEL_link(d, userRows({"n1"}));
  EXPECT_EQ(print(d), "  <managed-logs>\n"
                      "  <volume index=\"0\">\n"
                      "    <Name>alpha</Name>\n"
                      "      <snmp-users>\n"
                      "        <Name>n1</Name>\n"
                      "        <slot>1</slot>\n"
                      "      </snmp-users>\n"
                      "    <slot>7</slot>\n"
                      "  </volume>\n"
                      "  <volume index=\"1\">\n"
                      "    <Name>beta</Name>\n"
                      "    <slot>8</slot>\n"
                      "  </volume>\n"
                      "    <Name>n1</Name>\n"
                      "    <slot>1</slot>\n"
                      "  </managed-logs>\n");
}

TEST_F(Tag, TableWithoutAnXmlName) {
  // Catalogue basetypes all have element names; a table registered for a
  // keyword outside the catalogue has none.
  LogCapture log;
  tables_.add(tGSprimary_2Dip_2Daddress, qeltest::blocksTable, 2);
  EXPECT_EQ(print(own(QEL_Create(&session_, tGSprimary_2Dip_2Daddress, tGSnone, 0, 0))),
            "  <undefined>\n  </undefined>\n");
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>(2, "Table primary-ip-address does not have an XML name")));
  EXPECT_EQ(print(nullptr), "");
}

} // namespace
