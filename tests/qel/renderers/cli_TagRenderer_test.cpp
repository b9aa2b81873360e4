// Tag XML, byte for byte: the table element around the chain, row elements
// with and without index, qualifier and units attributes, nested tables.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;

class Tag : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  void TearDown() override {
    for (QEL_DESC *d : owned_)
      QEL_Free(d);
  }
  QEL_DESC *rows(int n, GS_TokenValues name = tGSvolume, GS_TokenValues table = tGSsnmp_2Dusers) {
    QEL_DESC *d = QEL_Create(&session_, table, name, n, 0);
    for (int r = 0; r < n; ++r) {
      QEL_FillColumnString(&session_, d, 0, r, ("n" + std::to_string(r + 1)).c_str());
      QEL_FillColumnU32(&session_, d, 1, r, static_cast<unsigned>(r + 1));
    }
    return d;
  }
  QEL_DESC *own(QEL_DESC *d) {
    owned_.push_back(d);
    return d;
  }
  std::string print(QEL_DESC *d, int indent = 0) {
    out_.Rewind();
    TagRenderer r(&session_);
    r.PrintTable(d, 0, indent);
    return out_.pTail();
  }

  utility::BufferStream out_{1 << 16};
  services::user::Session session_{out_};
  std::vector<QEL_DESC *> owned_;
};

TEST_F(Tag, RowElementsWithAndWithoutIndex) {
  EXPECT_EQ(print(own(rows(1))), "  <snmp-users>\n"
                                 "  <volume>\n"
                                 "    <Name>n1</Name>\n"
                                 "    <slot>1</slot>\n"
                                 "  </volume>\n"
                                 "  </snmp-users>\n");
  EXPECT_EQ(print(own(rows(2))), "  <snmp-users>\n"
                                 "  <volume index=\"0\">\n"
                                 "    <Name>n1</Name>\n"
                                 "    <slot>1</slot>\n"
                                 "  </volume>\n"
                                 "  <volume index=\"1\">\n"
                                 "    <Name>n2</Name>\n"
                                 "    <slot>2</slot>\n"
                                 "  </volume>\n"
                                 "  </snmp-users>\n");
}

TEST_F(Tag, WithoutAnObjectNameRowsRunTogether) {
  EXPECT_EQ(print(own(rows(2, tGSnone))), "  <snmp-users>\n"
                                          "    <Name>n1</Name>\n"
                                          "    <slot>1</slot>\n"
                                          "    <Name>n2</Name>\n"
                                          "    <slot>2</slot>\n"
                                          "  </snmp-users>\n");
}

TEST_F(Tag, ValuesAreNotEscaped) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "a<b & \"c\"");
  EXPECT_NE(print(d).find("    <Name>a<b & \"c\"</Name>\n"), std::string::npos);
}

TEST_F(Tag, UnitsAndQualifierAttributes) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  QEL_FillColumnBlocks(&session_, d, 1, 0, "2048");
  EXPECT_NE(print(d).find("    <Size units=\"MB\">1.05MB</Size>\n"), std::string::npos);

  // With a qualifier, its attribute replaces the storage size's units.
  PropertyMetaData &size = qeltest::blocksTable[1];
  size.qualifierNameId = tGSblocksize;
  size.qualifierValueId = tGS512;
  QEL_DESC *q = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  size.qualifierNameId = size.qualifierValueId = tGSnone;
  QEL_FillColumnBlocks(&session_, q, 1, 0, "2048");
  EXPECT_NE(print(q).find("    <Size blocksize=\"512\">1.05MB</Size>\n"), std::string::npos);
}

TEST_F(Tag, NestedTablesAndChains) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, tGSvolume, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnQEL(&session_, d, 1, 0, rows(1, tGSnone));
  QEL_FillColumnU32(&session_, d, 2, 0, 7);
  QEL_link(d, rows(1, tGSnone));
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
  QEL_DESC *d = own(QEL_Create(&session_, tGSstorage_2Dpools, tGSnone, 0, 0));
  LogCapture log;
  EXPECT_EQ(print(d), "  <undefined>\n  </undefined>\n");
  EXPECT_EQ(log.texts(Route::Error),
            (std::vector<std::string>(2, "Table storage-pools does not have an XML name")));
  EXPECT_EQ(print(nullptr), "");
}

TEST_F(Tag, ObjectIdsCountRows) {
  QEL_DESC *d = own(rows(3));
  QEL_link(d, rows(2));
  TagRenderer r(&session_);
  r.PrintTable(d, 0, 0);
  EXPECT_EQ(r.objectId, 5);
}

} // namespace
