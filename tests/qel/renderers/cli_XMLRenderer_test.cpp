// XML API document bodies: attribute order, object ids, COMP placement,
// nesting in the API and XML2 forms, brief attributes, escaping; and a real
// XML parser reading the result back.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Preferences = services::user::Preferences;

class Xml : public testing::Test {
protected:
  static void SetUpTestSuite() {
    qeltest::registerFixtureTables();
    setenv("TZ", "UTC", 1);
    tzset();
  }
  void TearDown() override {
    for (QEL_DESC *d : owned_)
      QEL_Free(d);
  }
  QEL_DESC *own(QEL_DESC *d) {
    owned_.push_back(d);
    return d;
  }
  QEL_DESC *twoRows(int rows = 1) {
    QEL_DESC *d = QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, rows, 0);
    for (int r = 0; r < rows; ++r) {
      QEL_FillColumnString(&session_, d, 0, r, ("n" + std::to_string(r + 1)).c_str());
      QEL_FillColumnU32(&session_, d, 1, r, static_cast<unsigned>(r + 1));
    }
    return d;
  }
  std::string print(QEL_DESC *d, Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    XMLRenderer r(&session_);
    r.PrintTable(d, 0, 0);
    return out_.pTail();
  }

  utility::BufferStream out_{1 << 20};
  services::user::Session session_{out_};
  std::vector<QEL_DESC *> owned_;
};

// Lines that hold a COMP or OBJECT start tag, trimmed of their properties.
std::vector<std::string> objectLines(const std::string &text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    if (line.find("<OBJECT") != std::string::npos || line.find("</OBJECT") != std::string::npos)
      out.push_back(line);
  return out;
}

TEST_F(Xml, Xml2Example) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSvolumes, 1, 0));
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
}

TEST_F(Xml, BriefAttributes) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "a");
  QEL_FillColumnBlocks(&session_, d, 1, 0, "1");
  const std::string expected =
      "  <OBJECT basetype=\"host-group-view-mappings\" name=\"host-group-view-mappings\" "
      "oid=\"1\">\n"
      "    <PROPERTY name=\"name\" type=\"string\">a</PROPERTY>\n"
      "    <PROPERTY name=\"size\" units=\"B\" type=\"string\">512.00B</PROPERTY>\n"
      "    <PROPERTY name=\"size-numeric\" units=\"blocks512\" type=\"string\">1</PROPERTY>\n"
      "  </OBJECT>\n";
  EXPECT_EQ(print(d, Preferences::OUTPUT_API_BRIEF), expected);
  EXPECT_EQ(print(d, Preferences::OUTPUT_XML2_BRIEF), "<COMP G=\"0\" P=\"1\"/>" + expected);
}

TEST_F(Xml, DateTimeCompanionTypes) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSspares, tGSnone, 1, 0));
  QEL_FillColumnDateTime(&session_, d, 15, 0, 1700000000u);
  std::string brief = print(d, Preferences::OUTPUT_API_BRIEF);
  EXPECT_NE(brief.find("<PROPERTY name=\"time-stamp\" type=\"string\">2023-11-14 22:13:20</PROPERTY>"),
            std::string::npos);
  EXPECT_NE(brief.find("<PROPERTY name=\"time-stamp-numeric\" type=\"string\">1700000000</PROPERTY>"),
            std::string::npos);
  std::string full = print(d, Preferences::OUTPUT_API);
  EXPECT_NE(full.find("<PROPERTY name=\"time-stamp-numeric\" type=\"uint32\" size=\"20\""),
            std::string::npos);
}

TEST_F(Xml, ApiNestsTablesInsideTheObject) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone, 2, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "alpha");
  QEL_FillColumnQEL(&session_, d, 1, 0, twoRows());
  QEL_FillColumnU32(&session_, d, 2, 0, 7);
  QEL_FillColumnString(&session_, d, 0, 1, "beta");
  std::string text = print(d, Preferences::OUTPUT_API);
  EXPECT_EQ(text.find("<COMP"), std::string::npos);
  EXPECT_EQ(objectLines(text),
            (std::vector<std::string>{
                "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=\"1\">",
                "    <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"2\">",
                "    </OBJECT>",
                "  </OBJECT>",
                "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=\"3\">",
                "  </OBJECT>"}));
  // The nested object stands between the properties before and after it,
  // its properties two spaces deeper.
  std::size_t name = text.find("name=\"name\""), nested = text.find("oid=\"2\""),
              slot = text.find("name=\"slot\"");
  EXPECT_LT(name, nested);
  EXPECT_LT(nested, slot);
  EXPECT_NE(text.find("\n      <PROPERTY name=\"name\""), std::string::npos);
}

TEST_F(Xml, Xml2WritesNestedTablesAfterTheHolder) {
  // cache-settings holds two nested tables in two columns.
  QEL_DESC *d = own(QEL_Create(&session_, tGScache_2Dsettings, tGSnone, 2, 0));
  QEL_FillColumnEnum(&session_, d, 0, 0, 0);
  QEL_FillColumnQEL(&session_, d, 1, 0, twoRows());
  QEL_FillColumnQEL(&session_, d, 2, 0, twoRows(2));
  QEL_FillColumnEnum(&session_, d, 0, 1, 1);
  std::string text = print(d, Preferences::OUTPUT_XML2);
  EXPECT_EQ(objectLines(text),
            (std::vector<std::string>{
                "<COMP G=\"0\" P=\"1\"/>  <OBJECT basetype=\"cache-settings\" name=\"cache-settings\" oid=\"1\">",
                "  </OBJECT>",
                "<COMP G=\"1\" P=\"2\"/>  <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"2\">",
                "  </OBJECT>",
                "<COMP G=\"1\" P=\"3\"/>  <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"3\">",
                "  </OBJECT>",
                "<COMP G=\"1\" P=\"4\"/>  <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"4\">",
                "  </OBJECT>",
                "<COMP G=\"0\" P=\"5\"/>  <OBJECT basetype=\"cache-settings\" name=\"cache-settings\" oid=\"5\">",
                "  </OBJECT>"}));
  EXPECT_EQ(print(d, Preferences::OUTPUT_XML2_BRIEF).find("<COMP G=\"1\" P=\"2\"/>") !=
                std::string::npos,
            true);
}

TEST_F(Xml, IdsRunAcrossTheChainAndRowsAreSorted) {
  QEL_DESC *a = own(QEL_Create(&session_, tGSvolumes, tGSnone, 3, 0));
  const char *names[] = {"vol-c", "vol-a", "vol-b"};
  for (int r = 0; r < 3; ++r)
    QEL_FillColumnString(&session_, a, 3, r, names[r]);
  QEL_link(a, twoRows(2));
  std::string text = print(a, Preferences::OUTPUT_API);
  std::regex oid("oid=\"(\\d+)\"");
  std::vector<std::string> ids;
  for (std::sregex_iterator it(text.begin(), text.end(), oid), end; it != end; ++it)
    ids.push_back((*it)[1]);
  EXPECT_EQ(ids, (std::vector<std::string>{"1", "2", "3", "4", "5"}));
  EXPECT_LT(text.find(">vol-a<"), text.find(">vol-b<"));
  EXPECT_LT(text.find(">vol-b<"), text.find(">vol-c<"));
}

TEST_F(Xml, EveryColumnIsWrittenAndValuesAreEscaped) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "R&D <\"lab\"> it's");
  QEL_SetColumnPrint(d, tGSslot, 0, true); // print and draw off
  std::string text = print(d, Preferences::OUTPUT_API);
  EXPECT_NE(text.find(">R&amp;D &lt;&quot;lab&quot;&gt; it&apos;s</PROPERTY>"), std::string::npos);
  EXPECT_NE(text.find("<PROPERTY name=\"slot\" type=\"uint32\" size=\"6\" draw=\"false\""),
            std::string::npos);
}

TEST_F(Xml, QualifiersKeysAndLocalizedDisplayNames) {
  QEL_DESC *d = own(QEL_Create(&session_, tGSdrives, tGSnone, 1, 0));
  QEL_FillColumnU64(&session_, d, 7, 0, "4096");
  QEL_FillColumnEnum(&session_, d, 40, 0, 1);
  std::string text = print(d, Preferences::OUTPUT_API);
  EXPECT_NE(text.find("<PROPERTY name=\"blocks\" blocksize=\"512\" type=\"uint64\""),
            std::string::npos);
  EXPECT_NE(text.find("<PROPERTY name=\"transfer-rate\" units=\"gbps\" type=\"string\""),
            std::string::npos);
  EXPECT_NE(text.find("<PROPERTY name=\"serial-number\" key=\"true\" type="), std::string::npos);
  EXPECT_NE(text.find("display-name=\"Transfer Rate\""), std::string::npos);
}

TEST_F(Xml, ManyNestedTablesAreCappedWithALogLine) {
  static PropertyMetaData many[51];
  for (auto &p : many)
    p = {tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone, true, true, false, false,
         false, SORT_NONE, nullptr};
  TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)
      ->addTable(tGSinitiators, many, 51, true, pGSnone, pGSnone, pGSnone);
  QEL_DESC *d = own(QEL_Create(&session_, tGSinitiators, tGSnone, 1, 0));
  for (int c = 0; c < 51; ++c)
    QEL_FillColumnQEL(&session_, d, c, 0, twoRows());
  LogCapture log;
  std::string text = print(d, Preferences::OUTPUT_XML2);
  EXPECT_EQ(objectLines(text).size(), 2u * 51);
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text,
            "XMLRenderer: object 1 of initiators holds more than 50 nested tables; "
            "column 50 is not written");
}

TEST_F(Xml, MissingRowOrderStopsTheChain) {
  QEL_DESC *a = own(twoRows(2));
  QEL_link(a, twoRows(1));
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

// A real parser reads the body back: well-formed, and every value the text
// that was filled (stripped of surrounding white space).
TEST_F(Xml, ParsesBackWithARealXmlParser) {
  const std::vector<std::string> values = {
      "R&D <lab>", "\"quoted\" & 'single'", "a>b", "naïve 日本語 ü", "<![CDATA[x]]>", "&amp;"};
  QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone,
                               static_cast<int>(values.size()), 0));
  for (std::size_t r = 0; r < values.size(); ++r) {
    QEL_FillColumnString(&session_, d, 0, static_cast<int>(r), values[r].c_str());
    QEL_DESC *child = QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, child, 0, 0, values[r].c_str());
    QEL_FillColumnQEL(&session_, d, 1, static_cast<int>(r), child);
  }
  for (auto type : {Preferences::OUTPUT_API, Preferences::OUTPUT_XML2,
                    Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2_BRIEF}) {
    SCOPED_TRACE(type);
    std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RESPONSE>\n" +
                      print(d, type) + "</RESPONSE>\n";
    char path[] = "/tmp/qel_xml_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    FILE *f = fdopen(fd, "w");
    std::fwrite(doc.data(), 1, doc.size(), f);
    std::fclose(f);
    // Prints the text of every PROPERTY named "name", one per line.
    std::string command = std::string("python3 -c \"import sys, xml.etree.ElementTree as E; "
                                      "[print(p.text or '') for p in E.parse(sys.argv[1]).iter('PROPERTY') "
                                      "if p.get('name') == 'name']\" ") +
                          path + " > " + path + ".out";
    ASSERT_EQ(std::system(command.c_str()), 0) << doc;
    std::ifstream in(std::string(path) + ".out");
    std::vector<std::string> got;
    for (std::string line; std::getline(in, line);)
      got.push_back(line);
    std::vector<std::string> expected;
    for (const auto &v : values) { // holder, then its nested object
      expected.push_back(v);
      expected.push_back(v);
    }
    EXPECT_EQ(got, expected);
    std::remove(path);
    std::remove((std::string(path) + ".out").c_str());
  }
}

} // namespace
