// The print entry: envelopes, the DTD, renderer choice by output type and
// the unrecognised-type report.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using Preferences = services::user::Preferences;

class Print : public qeltest::SessionTest {
protected:
  void SetUp() override { head_ = d_ = own(userRows({"n1"})); }
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

  QEL_DESC *d_ = nullptr, *head_ = nullptr; // what print() prints
};

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

TEST(Dtd, TwentySevenLinesExactly) {
  EXPECT_EQ(
      std::string(getDTDString()),
      "<!DOCTYPE RESPONSE [\n"
      "<!--- Response Element. Echoes the request back -->\n"
      "<!ELEMENT RESPONSE (ASC|COMP|OBJECT|LOG_CONTENT)*>\n"
      "<!ATTLIST RESPONSE VERSION CDATA #IMPLIED request CDATA #IMPLIED>\n"
      "<!--- Object Definition. Essentially the object can only contain properties. OID is "
      "unique per object only in each request -->\n"
      "<!ELEMENT OBJECT (PROPERTY|OBJECT)*>\n"
      "<!ATTLIST OBJECT oid CDATA #REQUIRED name CDATA #IMPLIED basetype CDATA #IMPLIED format "
      "(pairs|rows|packed|labeled|status) #IMPLIED >\n"
      "<!--- Property definition -->\n"
      "<!ELEMENT PROPERTY (#PCDATA)>\n"
      "<!ATTLIST PROPERTY \n"
      "    display-name CDATA #IMPLIED \n"
      "    draw (true|false) #IMPLIED \n"
      "    size CDATA #IMPLIED \n"
      "    type (string|uint8|uint16|uint32|uint64|int8|int16|int32|int64|bool|enum) #IMPLIED \n"
      "    key (true|false) #IMPLIED \n"
      "    name CDATA #REQUIRED\n"
      "    units CDATA #IMPLIED\n"
      "    blocksize CDATA #IMPLIED\n"
      ">\n"
      "<!--- Composition, P is the part component, G is the grouping component -->\n"
      "<!ELEMENT COMP EMPTY>\n"
      "<!ATTLIST COMP P IDREF #REQUIRED G IDREF #REQUIRED>\n"
      "  <!--- Simple Association, A and B are the oids of the Objects -->\n"
      "<!ELEMENT ASC EMPTY>\n"
      "<!ATTLIST ASC A IDREF #REQUIRED B IDREF #REQUIRED>\n"
      "<!ELEMENT LOG_CONTENT (#PCDATA)>\n"
      "] >\n");
}

TEST_F(Print, EnvelopesByOutputType) {
  using P = Preferences;
  const std::string dtd = getDTDString(), start = "<RESPONSE VERSION=\"L100\"",
                    end = "</RESPONSE>\n", api = body<XMLRenderer>(P::OUTPUT_API);
  const std::string tag = kDecl +
                          "<!-- This format is deprecated and will not be available in future "
                          "versions-->\n<data>\n" + body<TagRenderer>(P::OUTPUT_TAG) + "</data>\n";
  const std::string json = "new APIData([" + body<JSONRenderer>(P::OUTPUT_JSON) + "\n])\n";
  struct Case {
    P::OutputType type;
    bool dtd, decl;
    const char *request;
    std::string expected;
  } cases[] = {
      {P::OUTPUT_API, false, false, nullptr, start + ">\n" + api + end},
      {P::OUTPUT_API, false, false, "", start + ">\n" + api + end},
      {P::OUTPUT_API, true, true, "show \"volumes\" <all> & more",
       kDecl + dtd + start + " REQUEST=\"show &quot;volumes&quot; &lt;all&gt; &amp; more\">\n" +
           api + end},
      {P::OUTPUT_XML2, false, true, nullptr,
       kDecl + start + ">\n" + body<XMLRenderer>(P::OUTPUT_XML2) + end},
      {P::OUTPUT_API_BRIEF, true, false, "r",
       dtd + start + " REQUEST=\"r\">\n" + body<XMLRenderer>(P::OUTPUT_API_BRIEF) + end},
      {P::OUTPUT_XML2_BRIEF, true, false, "r",
       dtd + start + " REQUEST=\"r\">\n" + body<XMLRenderer>(P::OUTPUT_XML2_BRIEF) + end},
      {P::OUTPUT_TAG, false, false, nullptr, tag},
      {P::OUTPUT_TAG, true, true, "request", tag}, // the flags do not apply
      {P::OUTPUT_JSON, false, false, nullptr, json},
      {P::OUTPUT_JSON_ALT, true, true, "x", json},
      {P::OUTPUT_CONSOLE, false, false, nullptr, body<ConsoleRenderer>(P::OUTPUT_CONSOLE) + "\n"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(&c - cases);
    EXPECT_EQ(print(c.type, c.dtd, c.decl, c.request), c.expected);
  }
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
  EXPECT_EQ(log.records[0].route, Route::Log);
  EXPECT_EQ(log.records[0].type, 0);
  EXPECT_EQ(log.records[0].line, 648);
  EXPECT_STREQ(log.records[0].function,
               "void QEL_Print_Data(QEL_DESC*, services::user::Session*, utility::PutStream&, "
               "bool, bool, const char*)");
  EXPECT_EQ(log.records[0].text, "ERROR: Unrecognized output format 90 (volumes)");
  EXPECT_EQ(print(static_cast<Preferences::OutputType>(7000)),
            "Error: Unrecognized output format (line - 649)type 7000 ()\n");
}

TEST_F(Print, TruncatesSilentlyAndTracesWithDebug1193) {
  utility::BufferStream small(40);
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  LogCapture log;
  utility::Debug::setDebugOn(1193, true);
  QEL_Print_Data(d_, &session_, small, true, false, nullptr); // the DTD overflows
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_CONSOLE);
  QEL_Print_Data(d_, &session_, small, false, false, nullptr);
  utility::Debug::setDebugOn(1193, false);
  EXPECT_TRUE(small.isSilentTruncation());
  EXPECT_EQ(small.ReadAvailable(), 40);
  EXPECT_EQ(log.texts(Route::Debug),
            (std::vector<std::string>{"QEL_Print_Data: Enter", "QEL_Print_Data: Enter",
                                      "QEL_Print_Data: Printing with ConsoleRenderer",
                                      "QEL_Print_Data: Printing Table"}));
}

TEST_F(Print, NullHeadStillGetsItsEnvelope) {
  LogCapture log;
  head_ = nullptr;
  EXPECT_EQ(print(Preferences::OUTPUT_API), "<RESPONSE VERSION=\"L100\">\n</RESPONSE>\n");
  EXPECT_EQ(print(Preferences::OUTPUT_CONSOLE), "\n");
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>{"pDesc is NULL"});
}

} // namespace
