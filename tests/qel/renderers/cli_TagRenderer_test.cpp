// Tag XML, byte for byte: the table element around the chain, row elements
// with and without index, unescaped values, units, qualifiers and nesting.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Tag : public qeltest::SessionTest {
protected:
  // Prints \p d, then owns it.
  std::string print(QEL_DESC *d) {
    out_.Rewind();
    TagRenderer(&session_).PrintTable(d, 0, 0);
    if (d)
      own(d);
    return out_.pTail();
  }
};

TEST_F(Tag, RowElementsOnlyWithAnObjectNameIndexedOnlyWhenMany) {
  const std::string n1 = "    <Name>n1</Name>\n    <slot>1</slot>\n",
                    n2 = "    <Name>n2</Name>\n    <slot>2</slot>\n";
  EXPECT_EQ(print(userRows({"n1"}, tGSvolume)), "  <snmp-users>\n  <volume>\n" + n1 + "  </volume>\n  </snmp-users>\n");
  EXPECT_EQ(print(userRows({"n1", "n2"}, tGSvolume)), "  <snmp-users>\n  <volume index=\"0\">\n" + n1 +
                                "  </volume>\n  <volume index=\"1\">\n" + n2 +
                                "  </volume>\n  </snmp-users>\n");
  EXPECT_EQ(print(userRows({"n1", "n2"})), "  <snmp-users>\n" + n1 + n2 + "  </snmp-users>\n");
}

TEST_F(Tag, ValuesUnitsAndQualifiers) {
  QEL_DESC *d = QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0);
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
  QEL_DESC *q = QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0);
  size.qualifierNameId = size.qualifierValueId = tGSnone;
  QEL_FillColumnBlocks(&session_, q, 1, 0, "2048");
  EXPECT_NE(print(q).find("    <Size blocksize=\"512\">1.05MB</Size>\n"), std::string::npos);
}

TEST_F(Tag, NestedTablesAndChains) {
  QEL_DESC *d = QEL_Create(&session_, tGSmanaged_2Dlogs, tGSvolume, 1, 0);
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnQEL(&session_, d, 1, 0, userRows({"n1"}));
  QEL_FillColumnU32(&session_, d, 2, 0, 7);
  QEL_link(d, userRows({"n1"}));
  // The nested table is a complete table element at holder level + 6; the
  // linked table of another basetype stays inside the first table's element.
  EXPECT_EQ(print(d), "  <managed-logs>\n"
                      "  <volume>\n"
                      "    <Name>alpha</Name>\n"
                      "      <snmp-users>\n"
                      "        <Name>n1</Name>\n"
                      "        <slot>1</slot>\n"
                      "      </snmp-users>\n"
                      "    <slot>7</slot>\n"
                      "  </volume>\n"
                      "    <Name>n1</Name>\n"
                      "    <slot>1</slot>\n"
                      "  </managed-logs>\n");
}

TEST_F(Tag, TableWithoutAnXmlName) {
  LogCapture log;
  EXPECT_EQ(print(QEL_Create(&session_, tGSstorage_2Dpools, tGSnone, 0, 0)),
            "  <undefined>\n  </undefined>\n");
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>(2, "Table storage-pools does not have an XML name")));
  EXPECT_EQ(print(nullptr), "");
}

} // namespace
