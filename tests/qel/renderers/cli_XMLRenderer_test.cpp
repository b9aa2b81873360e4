// XML API document bodies: object ids, COMP placement, nesting in the API
// and XML2 forms, a column hidden at run time, escaping, the depth and nesting
// limits. The end-to-end suite has a real XML parser read whole documents
// back; its golden files pin the brief forms, units and the companions.
#include "support/fixture_tables.h"

#include <sstream>

namespace {

using qeltest::LogCapture;
using P = services::user::Preferences;

class Xml : public qeltest::SessionTest {
protected:
  std::string print(QEL_DESC *d, P::OutputType type = P::OUTPUT_API) {
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

// Bytes XML cannot hold never reach the document: C0 controls other than
// tab, line feed and carriage return are dropped; bytes outside valid UTF-8
// (and surrogates, U+FFFE, U+FFFF) become U+FFFD; valid UTF-8 stays; markup
// characters become entities.
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
      {"na\xC3\xAFve \xE6\x97\xA5 \xF0\x9F\x92\xBE", "na\xC3\xAFve \xE6\x97\xA5 \xF0\x9F\x92\xBE"},
      {"R&D <\"lab\"> it's", "R&amp;D &lt;&quot;lab&quot;&gt; it&apos;s"},
  };
  for (const auto &row : rows) {
    utility::BufferStream out(256);
    Renderer::convertBuffer(out, row.in);
    EXPECT_STREQ(out.pTail(), row.out) << row.in;
  }
}

// A nested object stands between the properties before and after it, its
// properties two spaces deeper; ids run on across the chain, whose rows are
// sorted. A column hidden at run time is still written, as draw="false".
TEST_F(Xml, ApiNestsTablesAndNumbersTheChain) {
  QEL_DESC *nested = userRows({"n1"});
  QEL_SetColumnPrint(nested, tGSslot, 0, true);
  QEL_DESC *d = logRows(nested);
  QEL_DESC *volumes = QEL_Create(&session_, tGSvolumes, tGSnone, 2, 0);
  QEL_FillColumnString(&session_, volumes, 3, 0, "vol-b");
  QEL_FillColumnString(&session_, volumes, 3, 1, "vol-a");
  QEL_link(d, volumes);
  const std::string text = print(d), end = "  </OBJECT>",
                    logs = "  <OBJECT basetype=\"managed-logs\" name=\"managed-logs\" oid=",
                    vols = "  <OBJECT basetype=\"volumes\" name=\"volumes\" oid=",
                    users = "    <OBJECT basetype=\"snmp-users\" name=\"snmp-users\" oid=\"2\">";
  EXPECT_EQ(text.find("<COMP"), std::string::npos);
  EXPECT_EQ(objectLines(text), (std::vector<std::string>{logs + "\"1\">", users, "    </OBJECT>", end,
                                                         logs + "\"3\">", end, vols + "\"4\">", end,
                                                         vols + "\"5\">", end}));
  EXPECT_LT(text.find("name=\"name\""), text.find("oid=\"2\""));
  EXPECT_LT(text.find("oid=\"2\""), text.find("name=\"slot\""));
  EXPECT_NE(text.find("\n      <PROPERTY name=\"name\""), std::string::npos);
  EXPECT_LT(text.find(">vol-a<"), text.find(">vol-b<"));
  EXPECT_NE(text.find("<PROPERTY name=\"slot\" type=\"uint32\" size=\"6\" draw=\"false\""), std::string::npos);
}

// Nesting deeper than the limit is cut with one log line; a renderer
// without a session writes nothing and says so.
TEST_F(Xml, DepthLimitAndNullSession) {
  QEL_DESC *top = nullptr;
  for (int level = 0; level < Renderer::kMaxDepth + 10; ++level) {
    QEL_DESC *d = QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone, 1, 0);
    QEL_FillColumnQEL(&session_, d, 1, 0, top);
    top = d;
  }
  own(top);
  LogCapture log;
  EXPECT_EQ(objectLines(print(top)).size(), 2u * (Renderer::kMaxDepth + 1));
  XMLRenderer(nullptr).PrintTable(top, 0, 0);
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"Renderer: nested tables deeper than 64 levels are not printed",
                                      "Renderer: no session"}));
}

// XML2 writes at most 50 nested tables of an object.
TEST_F(Xml, ManyNestedTablesAreCappedWithALogLine) {
  static PropertyMetaData many[51];
  for (auto &p : many)
    p = {tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone, true, true, false, false, false, SORT_NONE,
         nullptr};
  tables_.add(tGSinitiators, many, 51);
  QEL_DESC *d = own(QEL_Create(&session_, tGSinitiators, tGSnone, 1, 0));
  for (int c = 0; c < 51; ++c)
    QEL_FillColumnQEL(&session_, d, c, 0, userRows({"n1"}));
  LogCapture log;
  EXPECT_EQ(objectLines(print(d, P::OUTPUT_XML2)).size(), 2u * 51);
  EXPECT_EQ(log.texts(LogCapture::Route::Log),
            (std::vector<std::string>{"XMLRenderer: object 1 of initiators holds more than 50 nested tables; "
                                      "column 50 is not written"}));
}

} // namespace
