// XML API document bodies: attribute order, object ids, COMP placement,
// nesting in the API and XML2 forms, brief attributes and escaping.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Preferences = services::user::Preferences;

class Xml : public qeltest::SessionTest {
protected:
  static void SetUpTestSuite() {
    SessionTest::SetUpTestSuite();
    setenv("TZ", "UTC", 1);
    tzset();
  }
  QEL_DESC *create(GS_TokenValues table, int rows, GS_TokenValues name = tGSnone) {
    return own(QEL_Create(&session_, table, name, rows, 0));
  }
  std::string print(QEL_DESC *d, Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    XMLRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

// The lines that open or close an OBJECT.
std::vector<std::string> objectLines(const std::string &text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    if (line.find("<OBJECT") != std::string::npos || line.find("</OBJECT") != std::string::npos)
      out.push_back(line);
  return out;
}

TEST_F(Xml, FullAndBriefAttributes) {
  QEL_DESC *d = create(tGShost_2Dgroup_2Dview_2Dmappings, 1, tGSvolumes);
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnBlocks(&session_, d, 1, 0, "2048");
  EXPECT_EQ(
      print(d, Preferences::OUTPUT_XML2),
      "<COMP G=\"0\" P=\"1\"/>  <OBJECT basetype=\"host-group-view-mappings\" name=\"volumes\" "
      "oid=\"1\" format=\"rows\">\n"
      "    <PROPERTY name=\"name\" type=\"string\" size=\"10\" draw=\"true\" sort=\"string\" "
      "display-name=\"Name\">alpha</PROPERTY>\n"
      "    <PROPERTY name=\"size\" units=\"MB\" type=\"string\" size=\"10\" draw=\"true\" "
      "sort=\"size\" display-name=\"Size\">1.05MB</PROPERTY>\n"
      "    <PROPERTY name=\"size-numeric\" units=\"blocks512\" type=\"uint32\" size=\"10\" "
      "draw=\"true\" sort=\"size\" display-name=\"Size\">2048</PROPERTY>\n"
      "  </OBJECT>\n");

  QEL_DESC *b = create(tGShost_2Dgroup_2Dview_2Dmappings, 1);
  QEL_FillColumnString(&session_, b, 0, 0, "a");
  QEL_FillColumnBlocks(&session_, b, 1, 0, "1");
  const std::string brief =
      "  <OBJECT basetype=\"host-group-view-mappings\" name=\"host-group-view-mappings\" "
      "oid=\"1\">\n"
      "    <PROPERTY name=\"name\" type=\"string\">a</PROPERTY>\n"
      "    <PROPERTY name=\"size\" units=\"B\" type=\"string\">512.00B</PROPERTY>\n"
      "    <PROPERTY name=\"size-numeric\" units=\"blocks512\" type=\"string\">1</PROPERTY>\n"
      "  </OBJECT>\n";
  EXPECT_EQ(print(b, Preferences::OUTPUT_API_BRIEF), brief);
  EXPECT_EQ(print(b, Preferences::OUTPUT_XML2_BRIEF), "<COMP G=\"0\" P=\"1\"/>" + brief);
}

// Companion types, hidden columns, qualifiers, keys and escaping.
TEST_F(Xml, PropertyAttributesAndEscaping) {
  QEL_DESC *spares = create(tGSspares, 1);
  QEL_FillColumnDateTime(&session_, spares, 15, 0, 1700000000u);
  QEL_DESC *users = create(tGSsnmp_2Dusers, 1);
  QEL_FillColumnString(&session_, users, 0, 0, "R&D <\"lab\"> it's");
  QEL_SetColumnPrint(users, tGSslot, 0, true); // print and draw off: still written
  QEL_DESC *drives = create(tGSdrives, 1);
  QEL_FillColumnU64(&session_, drives, 7, 0, "4096");
  struct Case {
    QEL_DESC *d;
    Preferences::OutputType type;
    const char *fragment;
  } cases[] = {
      {spares, Preferences::OUTPUT_API_BRIEF,
       "<PROPERTY name=\"time-stamp\" type=\"string\">2023-11-14 22:13:20</PROPERTY>"},
      {spares, Preferences::OUTPUT_API_BRIEF,
       "<PROPERTY name=\"time-stamp-numeric\" type=\"string\">1700000000</PROPERTY>"},
      {spares, Preferences::OUTPUT_API,
       "<PROPERTY name=\"time-stamp-numeric\" type=\"uint32\" size=\"20\""},
      {users, Preferences::OUTPUT_API, ">R&amp;D &lt;&quot;lab&quot;&gt; it&apos;s</PROPERTY>"},
      {users, Preferences::OUTPUT_API,
       "<PROPERTY name=\"slot\" type=\"uint32\" size=\"6\" draw=\"false\""},
      {drives, Preferences::OUTPUT_API,
       "<PROPERTY name=\"blocks\" blocksize=\"512\" type=\"uint64\""},
      {drives, Preferences::OUTPUT_API,
       "<PROPERTY name=\"transfer-rate\" units=\"gbps\" type=\"string\""},
      {drives, Preferences::OUTPUT_API, "<PROPERTY name=\"serial-number\" key=\"true\" type="},
      {drives, Preferences::OUTPUT_API, "display-name=\"Transfer Rate\""},
  };
  for (const auto &c : cases)
    EXPECT_NE(print(c.d, c.type).find(c.fragment), std::string::npos) << c.fragment;
}

TEST_F(Xml, ApiNestsTablesInsideTheObject) {
  QEL_DESC *d = create(tGSmanaged_2Dlogs, 2);
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnQEL(&session_, d, 1, 0, userRows({"n1"}));
  QEL_FillColumnU32(&session_, d, 2, 0, 7);
  QEL_FillColumnString(&session_, d, 0, 1, "beta");
  std::string text = print(d, Preferences::OUTPUT_API);
  EXPECT_EQ(text.find("<COMP"), std::string::npos);
  EXPECT_EQ(objectLines(text),
            (std::vector<std::string>{
                "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=\"1\">",
                "    <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"2\">",
                "    </OBJECT>", "  </OBJECT>",
                "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=\"3\">",
                "  </OBJECT>"}));
  // The nested object stands between the properties before and after it,
  // its properties two spaces deeper.
  EXPECT_LT(text.find("name=\"name\""), text.find("oid=\"2\""));
  EXPECT_LT(text.find("oid=\"2\""), text.find("name=\"slot\""));
  EXPECT_NE(text.find("\n      <PROPERTY name=\"name\""), std::string::npos);
}

TEST_F(Xml, Xml2WritesNestedTablesAfterTheHolder) {
  // cache-settings holds two nested tables in two columns.
  QEL_DESC *d = create(tGScache_2Dsettings, 2);
  QEL_FillColumnEnum(&session_, d, 0, 0, 0);
  QEL_FillColumnQEL(&session_, d, 1, 0, userRows({"n1"}));
  QEL_FillColumnQEL(&session_, d, 2, 0, userRows({"n1", "n2"}));
  QEL_FillColumnEnum(&session_, d, 0, 1, 1);
  const std::string end = "  </OBJECT>", cache = "<OBJECT basetype=\"cache-settings\" "
                                                   "name=\"cache-settings\" oid=",
                    users = "<OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=";
  EXPECT_EQ(objectLines(print(d, Preferences::OUTPUT_XML2)),
            (std::vector<std::string>{"<COMP G=\"0\" P=\"1\"/>  " + cache + "\"1\">", end,
                                      "<COMP G=\"1\" P=\"2\"/>  " + users + "\"2\">", end,
                                      "<COMP G=\"1\" P=\"3\"/>  " + users + "\"3\">", end,
                                      "<COMP G=\"1\" P=\"4\"/>  " + users + "\"4\">", end,
                                      "<COMP G=\"0\" P=\"5\"/>  " + cache + "\"5\">", end}));
  EXPECT_NE(print(d, Preferences::OUTPUT_XML2_BRIEF).find("<COMP G=\"1\" P=\"2\"/>"),
            std::string::npos);
}

TEST_F(Xml, IdsRunAcrossTheChainAndRowsAreSorted) {
  QEL_DESC *a = create(tGSvolumes, 3);
  const char *names[] = {"vol-c", "vol-a", "vol-b"};
  for (int r = 0; r < 3; ++r)
    QEL_FillColumnString(&session_, a, 3, r, names[r]);
  QEL_link(a, userRows({"n1", "n2"}));
  std::string text = print(a, Preferences::OUTPUT_API);
  std::vector<std::string> ids;
  for (auto at = text.find("oid=\""); at != std::string::npos; at = text.find("oid=\"", at + 1))
    ids.push_back(text.substr(at + 5, text.find('"', at + 5) - at - 5));
  EXPECT_EQ(ids, (std::vector<std::string>{"1", "2", "3", "4", "5"}));
  EXPECT_LT(text.find(">vol-a<"), text.find(">vol-b<"));
  EXPECT_LT(text.find(">vol-b<"), text.find(">vol-c<"));
}

TEST_F(Xml, ManyNestedTablesAreCappedWithALogLine) {
  static PropertyMetaData many[51];
  for (auto &p : many)
    p = {tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone, true, true, false, false,
         false, SORT_NONE, nullptr};
  TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)
      ->addTable(tGSinitiators, many, 51, true, pGSnone, pGSnone, pGSnone);
  QEL_DESC *d = create(tGSinitiators, 1);
  for (int c = 0; c < 51; ++c)
    QEL_FillColumnQEL(&session_, d, c, 0, userRows({"n1"}));
  LogCapture log;
  EXPECT_EQ(objectLines(print(d, Preferences::OUTPUT_XML2)).size(), 2u * 51);
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text,
            "XMLRenderer: object 1 of initiators holds more than 50 nested tables; "
            "column 50 is not written");
}

TEST_F(Xml, MissingRowOrderStopsTheChain) {
  QEL_DESC *a = own(userRows({"n1", "n2"}));
  QEL_link(a, userRows({"n1"}));
  LogCapture log;
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  XMLRenderer r(&session_);
  out_.Rewind();
  framework::Memory::setFailAfter(0);
  r.PrintTable(a, 0, 0);
  framework::Memory::setFailAfter(-1);
  EXPECT_STREQ(out_.pTail(), "");
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "malloc failed");
  EXPECT_EQ(log.records[0].line, 185);
  EXPECT_STREQ(log.records[0].function,
               "virtual void XMLRenderer::PrintTable(QEL_DESC*, int, int)");
}

} // namespace
