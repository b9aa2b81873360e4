// The log sink, the diagnostic print functions and the counting allocator.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using qeltest::LogCapture;
using Route = framework::LogRecord::Route;
using framework::Memory;

// Records keep route, type, source and the whole text; sinks nest, and the
// default sink writes one line per record without the debug route.
TEST(Logger, RecordsSinksAndTheDefaultSink) {
  LogCapture log;
  const std::string big(3000, 'm'); // longer than the formatter's stack buffer
  framework::Logger::StaticLogMethod(3, "void f(int)", 426, "row[%d]", 7);
  logErrorPrint("<%s>", big.c_str());
  logDebugPrint("debug %d\n", 1192);
  assertEngOnly(false, "broken: %s"); // the message is not a format
  assertEngOnly(true, "never reported");
  ASSERT_EQ(log.records.size(), 4u);
  EXPECT_EQ(std::make_tuple(log.records[0].type, std::string(log.records[0].function), log.records[0].line),
            std::make_tuple(3, std::string("void f(int)"), 426));
  EXPECT_EQ(log.texts(Route::Log), std::vector<std::string>{"row[7]"});
  EXPECT_EQ(log.texts(Route::Error), std::vector<std::string>{"<" + big + ">"});
  EXPECT_EQ(log.texts(Route::Debug), std::vector<std::string>{"debug 1192\n"});
  EXPECT_EQ(log.texts(Route::Assert), std::vector<std::string>{"broken: %s"});
  log.clear();
  int nested = 0;
  auto previous = framework::Logger::setSink([](const framework::LogRecord &, void *n) { ++*static_cast<int *>(n); },
                                             &nested);
  logErrorPrint("one");
  framework::Logger::setSink(previous); // setSink hands back the sink it replaced
  logErrorPrint("two");
  EXPECT_EQ(nested, 1);
  EXPECT_EQ(log.texts(Route::Error), std::vector<std::string>{"two"});
  framework::Logger::setSink(framework::Logger::Sink{}); // the default sink
  testing::internal::CaptureStderr();
  logDebugPrint("hidden\n");
  logErrorPrint("visible\n");
  framework::Logger::StaticLogMethod(0, "fn", 12, "pDesc is NULL");
  std::string err = testing::internal::GetCapturedStderr();
  framework::Logger::setSink(previous);
  EXPECT_EQ(err, "qel error[0]: visible\nqel log[0] fn:12: pDesc is NULL\n");
}

// The fault injection the allocation-failure sweeps rely on: the n-th
// allocation fails alone or with all after it.
TEST(Memory, FaultInjection) {
  const long live = Memory::liveAllocations();
  std::string got;
  for (const auto &[n, persistent] : {std::pair<long, bool>{0, false}, {2, false}, {2, true}, {-1, false}}) {
    framework::testing::setFailAfter(n, persistent);
    void *blocks[5];
    for (auto &b : blocks)
      got += (b = Memory::StaticAlloc(16)) ? '+' : '-';
    framework::testing::setFailAfter(-1);
    for (auto &b : blocks)
      Memory::StaticFree(b);
    got += ' ';
  }
  EXPECT_EQ(got, "-++++ ++-++ ++--- +++++ ");
  EXPECT_EQ(Memory::liveAllocations(), live);
}

} // namespace
