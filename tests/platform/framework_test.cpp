// The log sink, the diagnostic print functions and the counting allocator.
#include "support/log_capture.h"

#include <gtest/gtest.h>

namespace {

using qeltest::LogCapture;
using Route = framework::LogRecord::Route;
using framework::Memory;

TEST(Logger, EveryDiagnosticIsOneRecordOnItsRoute) {
  LogCapture log;
  const std::string big(3000, 'm');
  framework::Logger::StaticLog(0, "QEL_Create: Could not find table %s", "x");
  framework::Logger::StaticLogMethod(3, "void f(int)", 426, "row[%d]", 7);
  logErrorPrint("<%s>", big.c_str()); // long messages are not cut
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
  EXPECT_EQ(r[2].text, "<" + big + ">");
  EXPECT_EQ(r[3].route, Route::Debug);
  EXPECT_EQ(r[3].text, "debug 1192\n");
  EXPECT_EQ(r[4].route, Route::Assert);
  EXPECT_EQ(r[4].text, "broken: %s");
}

TEST(Logger, SinksNestAndTheDefaultWritesOneLineWithoutDebug) {
  int first = 0, second = 0;
  auto original = framework::Logger::setSink([&](const framework::LogRecord &) { ++first; });
  auto previous = framework::Logger::setSink([&](const framework::LogRecord &) { ++second; });
  logErrorPrint("one");
  framework::Logger::setSink(previous); // setSink hands back the sink it replaced
  logErrorPrint("two");
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);

  framework::Logger::setSink(nullptr); // the default sink
  testing::internal::CaptureStderr();
  logDebugPrint("hidden\n");
  logErrorPrint("visible\n");
  framework::Logger::StaticLogMethod(0, "fn", 12, "pDesc is NULL");
  std::string err = testing::internal::GetCapturedStderr();
  framework::Logger::setSink(original);
  EXPECT_EQ(err.find("hidden"), std::string::npos);
  EXPECT_NE(err.find("visible\n"), std::string::npos);
  EXPECT_EQ(err.find("visible\n\n"), std::string::npos);
  EXPECT_NE(err.find("fn:12: pDesc is NULL\n"), std::string::npos);
}

TEST(Memory, FaultInjection) {
  struct Case {
    long n;
    bool persistent;
    const char *expected; // one character per allocation: + ok, - failed
  } cases[] = {{0, false, "-++++"}, {2, false, "++-++"}, {0, true, "-----"},
               {2, true, "++---"},  {-1, false, "+++++"}};
  for (const auto &c : cases) {
    long live = Memory::liveAllocations();
    Memory::setFailAfter(c.n, c.persistent);
    std::string got;
    void *blocks[5];
    for (auto &b : blocks)
      got += (b = Memory::StaticAlloc(16)) ? '+' : '-';
    Memory::setFailAfter(-1);
    EXPECT_EQ(got, c.expected);
    for (auto &b : blocks)
      Memory::StaticFree(b);
    EXPECT_EQ(Memory::liveAllocations(), live) << c.expected;
  }
}

TEST(Memory, StrdupCopiesThroughTheAllocator) {
  long live = Memory::liveAllocations();
  char *copy = Memory::StaticStrdup("volume");
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(copy, "volume");
  EXPECT_EQ(Memory::liveAllocations(), live + 1);
  Memory::StaticFree(copy);
  Memory::StaticFree(nullptr);
  EXPECT_EQ(Memory::liveAllocations(), live);
  EXPECT_EQ(Memory::StaticStrdup(nullptr), nullptr);
  Memory::setFailAfter(0);
  EXPECT_EQ(Memory::StaticStrdup("x"), nullptr);
  EXPECT_EQ(Memory::liveAllocations(), live);
  // An exception without a message reads as empty.
  EXPECT_STREQ(framework::Exception(1, nullptr, 0, nullptr, nullptr, false).message(), "");
}

} // namespace
