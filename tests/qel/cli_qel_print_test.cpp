// The print entry: envelopes, the DTD, renderer choice by output type and
// the unrecognised-type report.
#include "support/fixture_tables.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <tuple>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using Preferences = services::user::Preferences;

class Print : public qeltest::SessionTest {
protected:
  void SetUp() override {
    SessionTest::SetUp();
    head_ = d_ = own(userRows({"n1"}));
  }
  // Prints \p head into \p stream (by default the session's own, as command
  // handlers do); returns what the stream holds.
  std::string print(Preferences::OutputType type, bool dtd = false, bool decl = false,
                    const char *request = nullptr, utility::BufferStream *stream = nullptr) {
    session_.getPreferences().setOutputFormat(type);
    utility::BufferStream &to = stream ? *stream : out_;
    out_.Rewind();
    to.Rewind();
    d_->printed = 0;
    QEL_Print_Data(head_, &session_, to, dtd, decl, request);
    return to.pTail();
  }
  // The body alone, from the renderer of the type.
  template <typename R> std::string body(Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    d_->printed = 0;
    R(&session_).PrintTable(d_, 0, 0);
    return out_.pTail();
  }

  // How much of the body a 30-byte stream takes.
  template <typename R> long cut(Preferences::OutputType type) {
    utility::BufferStream small(30);
    services::user::Session session(small);
    session.getPreferences().setOutputFormat(type);
    d_->printed = 0;
    R(&session).PrintTable(d_, 0, 0);
    return small.ReadAvailable();
  }

  QEL_DESC *d_ = nullptr, *head_ = nullptr; // what print() prints
};

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

// The DTD, exactly, as clients validate against it (27 lines, its blanks
// included).
TEST(Dtd, TwentySevenLinesExactly) {
  std::ifstream in(QEL_SOURCE_DIR "/tests/qel/golden/dtd.txt", std::ios::binary);
  const std::string golden((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(std::count(golden.begin(), golden.end(), '\n'), 27);
  EXPECT_EQ(getDTDString(), golden);
}

// The front end's golden files pin each type's envelope without flags; here
// the flags, request escaping and the console's choice of stream.
TEST_F(Print, EnvelopeFlags) {
  using P = Preferences;
  const std::string start = "<RESPONSE VERSION=\"L100\"", end = "</RESPONSE>\n",
                    api = body<XMLRenderer>(P::OUTPUT_API);
  EXPECT_EQ(print(P::OUTPUT_API, false, false, ""), start + ">\n" + api + end);
  EXPECT_EQ(print(P::OUTPUT_API, true, true, "show \"volumes\" <all> & more"),
            kDecl + getDTDString() + start +
                " REQUEST=\"show &quot;volumes&quot; &lt;all&gt; &amp; more\">\n" + api + end);
  EXPECT_EQ(print(P::OUTPUT_XML2_BRIEF, true, false, "r"),
            getDTDString() + start + " REQUEST=\"r\">\n" +
                body<XMLRenderer>(P::OUTPUT_XML2_BRIEF) + end);
  // The tag and JSON forms ignore the flags.
  EXPECT_EQ(print(P::OUTPUT_TAG, true, true, "request"),
            kDecl + "<!-- This format is deprecated and will not be available in future "
                    "versions-->\n<data>\n" + body<TagRenderer>(P::OUTPUT_TAG) + "</data>\n");
  EXPECT_EQ(print(P::OUTPUT_JSON_ALT, true, true, "x"),
            "new APIData([" + body<JSONRenderer>(P::OUTPUT_JSON_ALT) + "\n])\n");
  // Console tables go to the given stream only with includeDtd; otherwise
  // only the newline does, the table to the session's stream.
  utility::BufferStream other(4096);
  const std::string table = body<ConsoleRenderer>(P::OUTPUT_CONSOLE);
  EXPECT_EQ(print(P::OUTPUT_CONSOLE, false, false, nullptr, &other), "\n");
  EXPECT_EQ(out_.pTail(), table);
  EXPECT_EQ(print(P::OUTPUT_CONSOLE, true, false, nullptr, &other), table + "\n");
  EXPECT_STREQ(out_.pTail(), "");
}

TEST_F(Print, UnrecognisedOutputType) {
  LogCapture log;
  EXPECT_EQ(print(static_cast<Preferences::OutputType>(tGSvolumes), true, true, "r"),
            "Error: Unrecognized output format (line - 649)type 90 (volumes)\n");
  ASSERT_EQ(log.records.size(), 1u);
  const auto &r = log.records[0];
  EXPECT_EQ(std::make_tuple(r.route, r.type, r.line, r.text),
            std::make_tuple(Route::Log, 0, 648,
                            std::string("ERROR: Unrecognized output format 90 (volumes)")));
  EXPECT_STREQ(r.function,
               "void QEL_Print_Data(QEL_DESC*, services::user::Session*, utility::PutStream&, "
               "bool, bool, const char*)");
  EXPECT_EQ(print(static_cast<Preferences::OutputType>(7000)),
            "Error: Unrecognized output format (line - 649)type 7000 ()\n");
}

// Output that overflows the stream is cut, never thrown: by each renderer,
// and by the print entry for the envelope it writes itself.
TEST_F(Print, OverflowIsCutSilently) {
  using P = Preferences;
  EXPECT_EQ(cut<ConsoleRenderer>(P::OUTPUT_CONSOLE), 30);
  EXPECT_EQ(cut<XMLRenderer>(P::OUTPUT_API), 30);
  EXPECT_EQ(cut<JSONRenderer>(P::OUTPUT_JSON), 30);
  EXPECT_EQ(cut<TagRenderer>(P::OUTPUT_TAG), 30);
  utility::BufferStream small(40);
  session_.getPreferences().setOutputFormat(P::OUTPUT_API);
  QEL_Print_Data(d_, &session_, small, true, false, nullptr);
  EXPECT_TRUE(small.isSilentTruncation());
  EXPECT_EQ(small.ReadAvailable(), 40);
}

// The standard formats, whole, of a table holding a nested one whose texts
// need quoting, escaping and UTF-8 repair.
TEST_F(Print, StandardFormatsWholeDocuments) {
  using P = Preferences;
  head_ = logRows(userRows({"q\"t,1", "b\xff\x01", "t\tx"}));
  session_.getPreferences().setSelectedTable(tGSsnmp_2Dusers);
  const std::pair<P::OutputType, std::string> cases[] = {
      {P::OUTPUT_JSON_STD, "{\n\"managed-logs\":[\n"
                           "{\"name\":\"alpha\",\"unhealthy-component\":[{\"name\":\"q\\\"t,1\",\"slot\":1},"
                           "{\"name\":\"b\uFFFD\\u0001\",\"slot\":2},{\"name\":\"t\\tx\",\"slot\":3}],\"slot\":7},\n"
                           "{\"name\":\"beta\",\"unhealthy-component\":[],\"slot\":8}\n]}\n"},
      {P::OUTPUT_CSV, "name,slot\r\n\"q\"\"t,1\",1\r\nb\uFFFD\x01,2\r\nt\tx,3\r\n"},
      {P::OUTPUT_TSV, "name\tslot\n\"q\"\"t,1\"\t1\nb\uFFFD\x01\t2\n\"t\tx\"\t3\n"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(print(c.first), c.second) << c.first;
  const std::string ndjson = print(P::OUTPUT_NDJSON);
  EXPECT_EQ(ndjson.substr(ndjson.find("\n{")), "\n{\"managed-logs\":{\"name\":\"beta\",\"unhealthy-component\":[],\"slot\":8}}\n");
  session_.getPreferences().setLocale(LOCALE_DE);
  const std::string page = print(P::OUTPUT_HTML, false, false, "show <x>");
  for (const char *part : {"<html lang=\"de\">", "<title>show &lt;x&gt;</title>",
                           "<td>q&quot;t,1</td><td class=\"n\">1</td>", "<summary>snmp-users (3)</summary>",
                           "</script>\n</body></html>\n"})
    EXPECT_NE(page.find(part), std::string::npos) << part;
}

TEST_F(Print, NullHeadStillGetsItsEnvelope) {
  LogCapture log;
  head_ = nullptr;
  EXPECT_EQ(print(Preferences::OUTPUT_API), "<RESPONSE VERSION=\"L100\">\n</RESPONSE>\n");
  EXPECT_EQ(print(Preferences::OUTPUT_CONSOLE), "\n");
  EXPECT_EQ(print(Preferences::OUTPUT_JSON_STD), "{}\n");
  EXPECT_EQ(print(Preferences::OUTPUT_CSV), "");
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>{"pDesc is NULL"});
}

} // namespace
