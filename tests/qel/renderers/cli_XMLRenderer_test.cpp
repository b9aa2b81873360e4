// XML API document bodies: object ids, COMP placement, nesting in the API
// and XML2 forms, brief attributes, companions and escaping. The end-to-end
// suite has a real XML parser read whole documents back.
#include "support/fixture_tables.h"

#include <sstream>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Preferences = services::user::Preferences;

class Xml : public qeltest::SessionTest {
protected:
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

// Escaping, a column hidden at run time, a qualifier and units; the golden
// files pin the companions.
TEST_F(Xml, PropertyAttributesAndEscaping) {
  QEL_DESC *users = create(tGSsnmp_2Dusers, 1);
  QEL_FillColumnString(&session_, users, 0, 0, "R&D <\"lab\"> it's");
  QEL_SetColumnPrint(users, tGSslot, 0, true); // print and draw off: still written
  QEL_DESC *drives = create(tGSdrives, 1);
  QEL_FillColumnU64(&session_, drives, 7, 0, "4096");
  const std::string u = print(users, Preferences::OUTPUT_API),
                    d = print(drives, Preferences::OUTPUT_API);
  for (const char *fragment : {">R&amp;D &lt;&quot;lab&quot;&gt; it&apos;s</PROPERTY>",
                               "<PROPERTY name=\"slot\" type=\"uint32\" size=\"6\" draw=\"false\""})
    EXPECT_NE(u.find(fragment), std::string::npos) << fragment;
  for (const char *fragment : {"<PROPERTY name=\"blocks\" blocksize=\"512\" type=\"uint64\"",
                               "<PROPERTY name=\"transfer-rate\" units=\"gbps\" type=\"string\""})
    EXPECT_NE(d.find(fragment), std::string::npos) << fragment;
}

// Bytes XML cannot hold never reach the document: C0 controls other than
// tab, line feed and carriage return are dropped; bytes outside valid UTF-8
// (and surrogates, U+FFFE, U+FFFF) become U+FFFD; valid UTF-8 stays.
TEST(XmlEscape, KeepsEveryDocumentWellFormed) {
  const struct {
    const char *in, *out;
  } rows[] = {
      {"a\x01" "b\x1f", "ab"},
      {"tab\tlf\ncr\r", "tab\tlf\ncr\r"},
      {"\xff", "\xEF\xBF\xBD"},
      {"x\xC3", "x\xEF\xBF\xBD"},                                   // cut sequence
      {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},                     // overlong
      {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},      // surrogate
      {"\xEF\xBF\xBE", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},      // U+FFFE
      {"na\xC3\xAFve \xE6\x97\xA5 \xF0\x9F\x92\xBE &", "na\xC3\xAFve \xE6\x97\xA5 \xF0\x9F\x92\xBE &amp;"},
  };
  for (const auto &row : rows) {
    utility::BufferStream out(256);
    Renderer::convertBuffer(out, row.in);
    EXPECT_STREQ(out.pTail(), row.out) << row.in;
  }
}

// Nesting deeper than the limit is cut with one log line; a renderer
// without a session writes nothing and says so.
TEST_F(Xml, DepthLimitAndNullSession) {
  QEL_DESC *top = nullptr;
  for (int level = 0; level < Renderer::kMaxDepth + 10; ++level) {
    QEL_DESC *d = QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, d, 0, 0, "x");
    if (top)
      QEL_FillColumnQEL(&session_, d, 1, 0, top);
    top = d;
  }
  own(top);
  LogCapture log;
  const std::string doc = print(top, Preferences::OUTPUT_API);
  std::size_t objects = 0;
  for (std::size_t at = doc.find("<OBJECT"); at != std::string::npos; at = doc.find("<OBJECT", at + 1))
    ++objects;
  EXPECT_EQ(objects, static_cast<std::size_t>(Renderer::kMaxDepth + 1));
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"Renderer: nested tables deeper than 64 levels are not printed"}));
  LogCapture none;
  XMLRenderer(nullptr).PrintTable(top, 0, 0);
  EXPECT_EQ(none.texts(LogCapture::Route::Log), (std::vector<std::string>{"Renderer: no session"}));
}

// A nested object stands between the properties before and after it, its
// properties two spaces deeper; ids run on across the chain, whose rows are
// sorted.
TEST_F(Xml, ApiNestsTablesAndNumbersTheChain) {
  QEL_DESC *d = logRows(userRows({"n1"}));
  QEL_DESC *volumes = QEL_Create(&session_, tGSvolumes, tGSnone, 2, 0);
  QEL_FillColumnString(&session_, volumes, 3, 0, "vol-b");
  QEL_FillColumnString(&session_, volumes, 3, 1, "vol-a");
  QEL_link(d, volumes);
  const std::string text = print(d, Preferences::OUTPUT_API), end = "  </OBJECT>",
                    logs = "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=",
                    vols = "  <OBJECT basetype=\"volumes\" name=\"volumes\" oid=",
                    users = "    <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"2\">";
  EXPECT_EQ(text.find("<COMP"), std::string::npos);
  EXPECT_EQ(objectLines(text),
            (std::vector<std::string>{logs + "\"1\">", users, "    </OBJECT>", end, logs + "\"3\">",
                                      end, vols + "\"4\">", end, vols + "\"5\">", end}));
  EXPECT_LT(text.find("name=\"name\""), text.find("oid=\"2\""));
  EXPECT_LT(text.find("oid=\"2\""), text.find("name=\"slot\""));
  EXPECT_NE(text.find("\n      <PROPERTY name=\"name\""), std::string::npos);
  EXPECT_LT(text.find(">vol-a<"), text.find(">vol-b<"));
}

TEST_F(Xml, ManyNestedTablesAreCappedWithALogLine) {
  static PropertyMetaData many[51];
  for (auto &p : many)
    p = {tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone, true, true, false, false,
         false, SORT_NONE, nullptr};
  tables_.add(tGSinitiators, many, 51);
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
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  const long allocations = [&] {
    XMLRenderer renderer(&session_);
    const long before = framework::Memory::totalAllocations();
    renderer.PrintTable(a, 0, 0);
    return framework::Memory::totalAllocations() - before;
  }();
  LogCapture log;
  XMLRenderer renderer(&session_);
  out_.Rewind();
  framework::testing::setFailAfter(allocations - 1); // the row order comes last
  renderer.PrintTable(a, 0, 0);
  framework::testing::setFailAfter(-1);
  EXPECT_STREQ(out_.pTail(), "");
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "malloc failed");
  EXPECT_EQ(log.records[0].line, 185);
  EXPECT_STREQ(log.records[0].function,
               "virtual void XMLRenderer::PrintTable(QEL_DESC*, int, int)");
}

} // namespace
