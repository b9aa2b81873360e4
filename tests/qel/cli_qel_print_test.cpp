// The print entry: envelopes, the DTD, renderer choice by output type and
// the unrecognised-type report.
#include "support/fixture_tables.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = qeltest::LogCapture::Route;
using Preferences = services::user::Preferences;

class Print : public testing::Test {
protected:
  static void SetUpTestSuite() { qeltest::registerFixtureTables(); }
  void SetUp() override {
    d_ = QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, d_, 0, 0, "n1");
    QEL_FillColumnU32(&session_, d_, 1, 0, 1);
  }
  void TearDown() override { QEL_Free(d_); }
  // Prints into the session's own stream, as command handlers do.
  std::string print(Preferences::OutputType type, bool dtd = false, bool decl = false,
                    const char *request = nullptr) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    d_->printed = 0;
    QEL_Print_Data(d_, &session_, out_, dtd, decl, request);
    return out_.pTail();
  }
  // The body alone, from the renderer of the type.
  template <typename R> std::string body(Preferences::OutputType type) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    d_->printed = 0;
    R(&session_).PrintTable(d_, 0, 0);
    return out_.pTail();
  }

  utility::BufferStream out_{1 << 16};
  services::user::Session session_{out_};
  QEL_DESC *d_ = nullptr;
};

const char kDecl[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

TEST(Dtd, TwentySevenLinesExactly) {
  const std::vector<std::string> lines = {
      "<!DOCTYPE RESPONSE [",
      "<!--- Response Element. Echoes the request back -->",
      "<!ELEMENT RESPONSE (ASC|COMP|OBJECT|LOG_CONTENT)*>",
      "<!ATTLIST RESPONSE VERSION CDATA #IMPLIED request CDATA #IMPLIED>",
      "<!--- Object Definition. Essentially the object can only contain properties. OID is "
      "unique per object only in each request -->",
      "<!ELEMENT OBJECT (PROPERTY|OBJECT)*>",
      "<!ATTLIST OBJECT oid CDATA #REQUIRED name CDATA #IMPLIED basetype CDATA #IMPLIED format "
      "(pairs|rows|packed|labeled|status) #IMPLIED >",
      "<!--- Property definition -->",
      "<!ELEMENT PROPERTY (#PCDATA)>",
      "<!ATTLIST PROPERTY ",
      "    display-name CDATA #IMPLIED ",
      "    draw (true|false) #IMPLIED ",
      "    size CDATA #IMPLIED ",
      "    type (string|uint8|uint16|uint32|uint64|int8|int16|int32|int64|bool|enum) #IMPLIED ",
      "    key (true|false) #IMPLIED ",
      "    name CDATA #REQUIRED",
      "    units CDATA #IMPLIED",
      "    blocksize CDATA #IMPLIED",
      ">",
      "<!--- Composition, P is the part component, G is the grouping component -->",
      "<!ELEMENT COMP EMPTY>",
      "<!ATTLIST COMP P IDREF #REQUIRED G IDREF #REQUIRED>",
      "  <!--- Simple Association, A and B are the oids of the Objects -->",
      "<!ELEMENT ASC EMPTY>",
      "<!ATTLIST ASC A IDREF #REQUIRED B IDREF #REQUIRED>",
      "<!ELEMENT LOG_CONTENT (#PCDATA)>",
      "] >"};
  ASSERT_EQ(lines.size(), 27u);
  std::string expected;
  for (const auto &l : lines)
    expected += l + "\n";
  EXPECT_EQ(getDTDString(), expected);
  EXPECT_EQ(getDTDString(), getDTDString()) << "one constant text";
}

TEST_F(Print, XmlApiEnvelopes) {
  const std::string api = body<XMLRenderer>(Preferences::OUTPUT_API);
  EXPECT_EQ(print(Preferences::OUTPUT_API), "<RESPONSE VERSION=\"L100\">\n" + api + "</RESPONSE>\n");
  EXPECT_EQ(print(Preferences::OUTPUT_API, false, false, ""),
            "<RESPONSE VERSION=\"L100\">\n" + api + "</RESPONSE>\n");
  EXPECT_EQ(print(Preferences::OUTPUT_API, true, true, "show \"volumes\" <all> & more"),
            std::string(kDecl) + getDTDString() +
                "<RESPONSE VERSION=\"L100\" REQUEST=\"show &quot;volumes&quot; &lt;all&gt; "
                "&amp; more\">\n" +
                api + "</RESPONSE>\n");
  EXPECT_EQ(print(Preferences::OUTPUT_XML2, false, true),
            std::string(kDecl) + "<RESPONSE VERSION=\"L100\">\n" +
                body<XMLRenderer>(Preferences::OUTPUT_XML2) + "</RESPONSE>\n");
  for (auto type : {Preferences::OUTPUT_API_BRIEF, Preferences::OUTPUT_XML2_BRIEF}) {
    std::string doc = print(type, true, false, "r");
    EXPECT_EQ(doc.rfind(getDTDString(), 0), 0u);
    EXPECT_NE(doc.find("<RESPONSE VERSION=\"L100\" REQUEST=\"r\">\n"), std::string::npos);
  }
}

TEST_F(Print, TagDocumentIgnoresTheFlags) {
  const std::string expected =
      std::string(kDecl) +
      "<!-- This format is deprecated and will not be available in future versions-->\n"
      "<data>\n" +
      body<TagRenderer>(Preferences::OUTPUT_TAG) + "</data>\n";
  EXPECT_EQ(print(Preferences::OUTPUT_TAG), expected);
  EXPECT_EQ(print(Preferences::OUTPUT_TAG, true, true, "request"), expected);
}

TEST_F(Print, JsonWrapperAndBothJsonTypesAgree) {
  const std::string expected =
      "new APIData([" + body<JSONRenderer>(Preferences::OUTPUT_JSON) + "\n])\n";
  EXPECT_EQ(print(Preferences::OUTPUT_JSON), expected);
  EXPECT_EQ(print(Preferences::OUTPUT_JSON_ALT, true, true, "x"), expected);
}

TEST_F(Print, ConsoleWritesTablesToTheSessionOrTheGivenStream) {
  const std::string table = body<ConsoleRenderer>(Preferences::OUTPUT_CONSOLE);
  EXPECT_EQ(print(Preferences::OUTPUT_CONSOLE), table + "\n");
  // Another stream: without includeDtd only the newline goes there.
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_CONSOLE);
  utility::BufferStream other(4096);
  out_.Rewind();
  d_->printed = 0;
  QEL_Print_Data(d_, &session_, other, false, false, nullptr);
  EXPECT_STREQ(other.pTail(), "\n");
  EXPECT_EQ(std::string(out_.pTail()), table);
  other.Rewind();
  out_.Rewind();
  d_->printed = 0;
  QEL_Print_Data(d_, &session_, other, true, false, nullptr);
  EXPECT_EQ(std::string(other.pTail()), table + "\n");
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
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_API);
  out_.Rewind();
  QEL_Print_Data(nullptr, &session_, out_, false, false, nullptr);
  EXPECT_STREQ(out_.pTail(), "<RESPONSE VERSION=\"L100\">\n</RESPONSE>\n");
  session_.getPreferences().setOutputFormat(Preferences::OUTPUT_CONSOLE);
  out_.Rewind();
  QEL_Print_Data(nullptr, &session_, out_, false, false, nullptr);
  EXPECT_STREQ(out_.pTail(), "\n");
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>{"pDesc is NULL"});
}

} // namespace
