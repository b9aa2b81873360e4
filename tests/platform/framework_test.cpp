// The log sink, the diagnostic print functions and the counting allocator.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using qeltest::LogCapture;
using Route = framework::LogRecord::Route;

TEST(Logger, EveryDiagnosticIsOneRecordOnItsRoute) {
  LogCapture log;
  framework::Logger::StaticLog(0, "QEL_Create: Could not find table %s", "x");
  framework::Logger::StaticLogMethod(3, "void f(int)", 426, "row[%d]", 7);
  logErrorPrint("bad %s", "data");
  logDebugPrint("debug %d\n", 1192);
  assertEngOnly(false, "broken: %s"); // the message is not a format
  assertEngOnly(true, "never reported");

  ASSERT_EQ(log.records.size(), 5u);
  const auto &r = log.records;
  EXPECT_EQ(r[0].route, Route::Log);
  EXPECT_EQ(r[0].type, 0);
  EXPECT_EQ(r[0].function, nullptr);
  EXPECT_EQ(r[0].line, 0);
  EXPECT_EQ(r[0].text, "QEL_Create: Could not find table x");
  EXPECT_EQ(r[1].route, Route::Log);
  EXPECT_EQ(r[1].type, 3);
  EXPECT_STREQ(r[1].function, "void f(int)");
  EXPECT_EQ(r[1].line, 426);
  EXPECT_EQ(r[1].text, "row[7]");
  EXPECT_EQ(r[2].route, Route::Error);
  EXPECT_EQ(r[2].text, "bad data");
  EXPECT_EQ(r[3].route, Route::Debug);
  EXPECT_EQ(r[3].text, "debug 1192\n");
  EXPECT_EQ(r[4].route, Route::Assert);
  EXPECT_EQ(r[4].text, "broken: %s");
}

TEST(Logger, LongMessagesAreNotCut) {
  LogCapture log;
  std::string big(3000, 'm');
  logErrorPrint("<%s>", big.c_str());
  ASSERT_EQ(log.records.size(), 1u);
  EXPECT_EQ(log.records[0].text, "<" + big + ">");
}

TEST(Logger, SetSinkReturnsThePreviousSink) {
  int first = 0, second = 0;
  auto original = framework::Logger::setSink(
      [&](const framework::LogRecord &) { ++first; });
  auto previous = framework::Logger::setSink(
      [&](const framework::LogRecord &) { ++second; });
  logErrorPrint("one");
  framework::Logger::setSink(previous);
  logErrorPrint("two");
  framework::Logger::setSink(original);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST(Logger, DefaultSinkWritesOneLineAndDropsDebug) {
  auto saved = framework::Logger::setSink(nullptr); // the default sink
  testing::internal::CaptureStderr();
  logDebugPrint("hidden\n");
  logErrorPrint("visible\n");
  framework::Logger::StaticLogMethod(0, "fn", 12, "pDesc is NULL");
  std::string err = testing::internal::GetCapturedStderr();
  framework::Logger::setSink(saved);
  EXPECT_EQ(err.find("hidden"), std::string::npos);
  EXPECT_NE(err.find("visible\n"), std::string::npos);
  EXPECT_EQ(err.find("visible\n\n"), std::string::npos);
  EXPECT_NE(err.find("fn:12: pDesc is NULL\n"), std::string::npos);
}

TEST(Memory, FaultInjection) {
  struct Case {
    const char *name;
    long n;
    bool persistent;
    const char *expected; // one character per allocation: + ok, - failed
  } cases[] = {
      {"next one fails once", 0, false, "-++++"},
      {"third fails once", 2, false, "++-++"},
      {"persistent from the next", 0, true, "-----"},
      {"persistent after two", 2, true, "++---"},
      {"off", -1, false, "+++++"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    long live = framework::Memory::liveAllocations();
    framework::Memory::setFailAfter(c.n, c.persistent);
    std::string got;
    void *blocks[5];
    for (auto &b : blocks) {
      b = framework::Memory::StaticAlloc(16);
      got += b ? '+' : '-';
    }
    framework::Memory::setFailAfter(-1);
    EXPECT_EQ(got, c.expected);
    for (auto &b : blocks)
      framework::Memory::StaticFree(b);
    EXPECT_EQ(framework::Memory::liveAllocations(), live);
  }
}

TEST(Memory, StrdupCopiesThroughTheAllocator) {
  long live = framework::Memory::liveAllocations();
  char *copy = framework::Memory::StaticStrdup("volume");
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(copy, "volume");
  EXPECT_EQ(framework::Memory::liveAllocations(), live + 1);
  framework::Memory::StaticFree(copy);
  framework::Memory::StaticFree(nullptr);
  EXPECT_EQ(framework::Memory::liveAllocations(), live);
  EXPECT_EQ(framework::Memory::StaticStrdup(nullptr), nullptr);
  framework::Memory::setFailAfter(0);
  EXPECT_EQ(framework::Memory::StaticStrdup("x"), nullptr);
  EXPECT_EQ(framework::Memory::liveAllocations(), live);
}

TEST(Exception, KeepsItsArguments) {
  framework::Exception e(1231, "qel_Qel", 77, "static f()", "Qel Not Available",
                         true);
  EXPECT_EQ(e.code(), 1231u);
  EXPECT_STREQ(e.file(), "qel_Qel");
  EXPECT_EQ(e.line(), 77);
  EXPECT_STREQ(e.function(), "static f()");
  EXPECT_STREQ(e.message(), "Qel Not Available");
  EXPECT_TRUE(e.flag());
  framework::Exception nulls(1, nullptr, 0, nullptr, nullptr, false);
  EXPECT_STREQ(nulls.message(), "");
}

} // namespace
