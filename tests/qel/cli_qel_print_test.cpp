// The print entry: envelopes, the DTD, renderer choice by output type and
// the unrecognised-type report; the standard formats whole; the paged print.
#include "support/fixture_tables.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <tuple>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using P = services::user::Preferences;

class Print : public qeltest::SessionTest {
protected:
  void SetUp() override {
    SessionTest::SetUp();
    head_ = d_ = own(userRows({"n1"}));
  }
  // Prints head_ into \p stream (by default the session's own, as command
  // handlers do); returns what the stream holds.
  std::string print(P::OutputType type, bool dtd = false, bool decl = false,
                    const char *request = nullptr, utility::BufferStream *stream = nullptr) {
    session_.getPreferences().setOutputFormat(type);
    utility::BufferStream &to = stream ? *stream : out_;
    out_.Rewind();
    to.Rewind();
    d_->printed = 0;
    QEL_Print_Data(head_, &session_, to, dtd, decl, request);
    return to.pTail();
  }
  // `managed-logs` rows first .. first + count - 1 under object name
  // \p name, in print order: texts to escape, a two-row nested table in
  // every third row.
  QEL_DESC *logPage(int first, int count, GS_TokenValues name = tGSvolume) {
    QEL_DESC *d = QEL_Create(&session_, tGSmanaged_2Dlogs, name, count, 0);
    char text[32];
    for (int r = 0; r < count; ++r) {
      std::snprintf(text, sizeof text, "log <%d> & \"x\"", first + r);
      QEL_FillColumnString(&session_, d, 0, r, text);
      QEL_FillColumnU32(&session_, d, 2, r, static_cast<unsigned>(first + r));
      if ((first + r) % 3 == 0)
        QEL_FillColumnQEL(&session_, d, 1, r, userRows({"n0", "n1"}));
    }
    return d;
  }

  QEL_DESC *d_ = nullptr, *head_ = nullptr; // what print() prints
};

// The DTD, exactly, as clients validate against it. The front end's golden
// files pin each type's envelope without flags; here the flags, request
// escaping and the console's choice of stream.
TEST_F(Print, EnvelopeFlags) {
  std::ifstream in(QEL_SOURCE_DIR "/tests/qel/golden/dtd.txt", std::ios::binary);
  const std::string dtd((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()),
      decl = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n", api = print(P::OUTPUT_API),
      tag = print(P::OUTPUT_TAG), script = print(P::OUTPUT_JSON_ALT);
  EXPECT_EQ(getDTDString(), dtd);
  EXPECT_EQ(print(P::OUTPUT_API, false, false, ""), api);
  // The request goes into the RESPONSE start tag.
  EXPECT_EQ(print(P::OUTPUT_API, true, true, "show \"volumes\" <all> & more"),
            decl + dtd + std::string(api).insert(api.find('>'), " REQUEST=\"show &quot;volumes&quot; &lt;all&gt; &amp; more\""));
  // The tag and JSON forms ignore the flags.
  EXPECT_EQ(print(P::OUTPUT_TAG, true, true, "request"), tag);
  EXPECT_EQ(print(P::OUTPUT_JSON_ALT, true, true, "x"), script);
  // Console tables go to the given stream only with includeDtd; otherwise
  // only the newline does, the table to the session's stream.
  utility::BufferStream other(4096);
  EXPECT_EQ(print(P::OUTPUT_CONSOLE, false, false, nullptr, &other), "\n");
  const std::string table = out_.pTail();
  EXPECT_EQ(table, "Name       Slot   \n------------------\nn1         1\n------------------");
  EXPECT_EQ(print(P::OUTPUT_CONSOLE, true, false, nullptr, &other), table + "\n");
  EXPECT_STREQ(out_.pTail(), "");
  // No table still gets its envelope.
  LogCapture log;
  head_ = nullptr;
  EXPECT_EQ(print(P::OUTPUT_API), "<RESPONSE VERSION=\"L100\">\n</RESPONSE>\n");
  EXPECT_EQ(print(P::OUTPUT_CONSOLE), "\n");
  EXPECT_EQ(print(P::OUTPUT_JSON_STD), "{}\n");
  EXPECT_EQ(print(P::OUTPUT_CSV), "");
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>{"pDesc is NULL"});
}

TEST_F(Print, UnrecognisedOutputType) {
  LogCapture log;
  EXPECT_EQ(print(static_cast<P::OutputType>(tGSvolumes), true, true, "r"),
            "Error: Unrecognized output format (line - 649)type 90 (volumes)\n");
  ASSERT_EQ(log.records.size(), 1u);
  const auto &r = log.records[0];
  EXPECT_EQ(std::make_tuple(r.route, r.type, r.line, r.text),
            std::make_tuple(Route::Log, 0, 648, std::string("ERROR: Unrecognized output format 90 (volumes)")));
  EXPECT_EQ(print(static_cast<P::OutputType>(7000)), "Error: Unrecognized output format (line - 649)type 7000 ()\n");
}

// The standard formats, whole, of a table holding a nested one whose texts
// need quoting, escaping and UTF-8 repair.
TEST_F(Print, StandardFormatsWholeDocuments) {
  head_ = logRows(userRows({"q\"t,1", "b\xff\x01", "t\tx"}));
  session_.getPreferences().setSelectedTable(tGSsnmp_2Dusers);
  const std::pair<P::OutputType, std::string> cases[] = {
      {P::OUTPUT_JSON_STD, "{\n\"managed-logs\":[\n"
                           "{\"name\":\"alpha\",\"unhealthy-component\":[{\"name\":\"q\\\"t,1\",\"slot\":1},"
                           "{\"name\":\"b\uFFFD\\u0001\",\"slot\":2},{\"name\":\"t\\tx\",\"slot\":3}],\"slot\":7},\n"
                           "{\"name\":\"beta\",\"unhealthy-component\":[],\"slot\":8}\n]}\n"},
      {P::OUTPUT_CSV, "name,slot\r\n\"q\"\"t,1\",1\r\nb\uFFFD\x01,2\r\nt\tx,3\r\n"},
      {P::OUTPUT_TSV, "name\tslot\n\"q\"\"t,1\"\t1\nb\uFFFD\x01\t2\n\"t\tx\"\t3\n"},
      {P::OUTPUT_NDJSON, "{\"managed-logs\":{\"name\":\"alpha\",\"unhealthy-component\":[{\"name\":\"q\\\"t,1\",\"slot\":1},"
                         "{\"name\":\"b\uFFFD\\u0001\",\"slot\":2},{\"name\":\"t\\tx\",\"slot\":3}],\"slot\":7}}\n"
                         "{\"managed-logs\":{\"name\":\"beta\",\"unhealthy-component\":[],\"slot\":8}}\n"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(print(c.first), c.second) << c.first;
  session_.getPreferences().setLocale(LOCALE_DE);
  const std::string page = print(P::OUTPUT_HTML, false, false, "show <x>");
  for (const char *part : {"<html lang=\"de\">", "<title>show &lt;x&gt;</title>",
                           "<td>q&quot;t,1</td><td class=\"n\">1</td>", "<summary>snmp-users (3)</summary>",
                           "</script>\n</body></html>\n"})
    EXPECT_NE(page.find(part), std::string::npos) << part;
}

// A paged print of rows in print order is the whole print of one descriptor
// holding them, byte for byte, whatever the page size: object ids, XML2
// COMP elements, web-script commas, tag indexes and wrappers, and the
// console's header and rule (fixed widths here) carry across pages. A
// linked table ends the last page, and an empty page continues the table.
TEST_F(Print, PagesPrintAsOneDescriptor) {
  for (const P::OutputType type : {P::OUTPUT_API, P::OUTPUT_API_BRIEF, P::OUTPUT_XML2, P::OUTPUT_XML2_BRIEF,
                                   P::OUTPUT_JSON, P::OUTPUT_JSON_ALT, P::OUTPUT_TAG, P::OUTPUT_CONSOLE,
                                   P::OUTPUT_JSON_STD, P::OUTPUT_NDJSON, P::OUTPUT_CSV, P::OUTPUT_TSV,
                                   P::OUTPUT_HTML})
    for (const int rows : {1, 2, 23})
      for (const int page : {1, 2, 7, 4096}) {
        SCOPED_TRACE(testing::Message() << "type " << type << ", " << rows << " rows, pages of " << page);
        session_.getPreferences().setOutputFormat(type);
        QEL_DESC *whole = logPage(0, rows);
        QEL_link(whole, userRows({"tail"}));
        out_.Rewind();
        QEL_Print_Data(whole, &session_, out_, true, true, "show");
        const std::string expected = out_.pTail();
        QEL_Free(whole);

        out_.Rewind();
        QEL_PRINT *print = QEL_PrintOpen(&session_, out_, true, true, "show");
        for (int first = 0; first < rows; first += page) {
          QEL_DESC *d = logPage(first, std::min(page, rows - first));
          if (first + page >= rows)
            QEL_link(d, userRows({"tail"}));
          EXPECT_TRUE(QEL_PrintPage(print, d));
          QEL_Free(d);
          if (first == 0 && page < rows) {
            QEL_DESC *empty = logPage(0, 0);
            QEL_PrintPage(print, empty);
            QEL_Free(empty);
          }
        }
        QEL_PrintClose(print);
        EXPECT_EQ(out_.pTail(), expected);
      }
}

// Output that overflows the stream is cut, never thrown: by the renderers'
// shared table walk, and by the print entry for the envelope it writes
// itself. A sink that takes no more text stops a paged print after the page
// that filled it (here a bounded buffer; a failed file alike); the close
// still ends what it can, and nothing leaks.
TEST_F(Print, FullStreams) {
  utility::BufferStream tiny(30), small(40), paged(4000);
  services::user::Session direct(tiny);
  ConsoleRenderer(&direct).PrintTable(d_, 0, 0);
  EXPECT_EQ(tiny.ReadAvailable(), 30);
  EXPECT_EQ(print(P::OUTPUT_API, true, false, nullptr, &small).size(), 40u);
  services::user::Session session(paged); // the body goes to the session's stream
  session.getPreferences().setOutputFormat(P::OUTPUT_API);
  LogCapture log;
  QEL_PRINT *print = QEL_PrintOpen(&session, paged, false, false, nullptr);
  int printed = 0;
  for (int page = 0; page < 10; ++page) {
    QEL_DESC *d = logPage(page, 1, tGSnone);
    printed += QEL_PrintPage(print, d);
    QEL_Free(d);
  }
  QEL_PrintClose(print);
  EXPECT_TRUE(printed > 0 && printed < 10) << printed;
  EXPECT_EQ(log.texts(Route::Log),
            std::vector<std::string>{"QEL_PrintPage: the output stream is full or failed; the print stops"});
  EXPECT_EQ(QEL_PrintPage(nullptr, d_), false);
  QEL_PrintClose(nullptr);
}

} // namespace
