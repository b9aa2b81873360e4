// Formatting helpers, the thread locale and the bounded string operations.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

namespace {

using services::user::Preferences;
using qeltest::LogCapture;

TEST(GetSizeString, UnitsBasesAndPrecision) {
  const auto A = Preferences::UNITS_AUTO;
  struct Case {
    std::uint64_t bytes;
    Preferences::StorageUnit units;
    int precision, base;
    const char *number, *unit;
  } cases[] = {
      {999, A, 2, 10, "999.00", "B"},      {1000, A, 2, 10, "1.00", "KB"},
      {1023, A, 2, 2, "1023.00", "B"},     {1024, A, 2, 2, "1.00", "KiB"},
      {1048576, A, 0, 10, "1", "MB"},      {999999999999ull, A, 1, 10, "1000.0", "GB"},
      {5000000000000000000ull, A, 3, 10, "5000.000", "PB"},
      {1048576, Preferences::UNITS_TB, 2, 10, "0.00", "TB"},
      {1099511627776ull, Preferences::UNITS_GB, 2, 2, "1024.00", "GiB"},
      {1048576, Preferences::UNITS_MB, 2, 16, "1.05", "MB"}, // other bases: 10
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(std::to_string(c.bytes) + " base " + std::to_string(c.base));
    char number[20], unit[8];
    getSizeString(c.bytes, c.units, static_cast<std::uint8_t>(c.precision), c.base, number,
                  unit);
    EXPECT_STREQ(number, c.number);
    EXPECT_STREQ(unit, c.unit);
  }
  // The widest case: the largest count in the smallest forced unit with the
  // most decimals. Bytes past the 20th stay untouched.
  char number[32], unit[8];
  std::memset(number, '#', sizeof number);
  getSizeString(UINT64_MAX, Preferences::UNITS_KB, 255, 10, number, unit);
  EXPECT_LE(std::strlen(number), 19u);
  EXPECT_EQ(std::string(number + 20, 12), std::string(12, '#'));
  EXPECT_EQ(std::string(number).substr(0, 15), "184467440737095");
}

TEST(Strip, WhiteSpaceAtBothEndsOnly) {
  struct Case {
    const char *in, *out;
  } cases[] = {{"  disk  ", "disk"}, {" \t\n", ""}, {"", ""}, {"\tx y \r\n", "x y"}};
  for (const auto &c : cases) {
    char buf[32];
    std::strcpy(buf, c.in);
    EXPECT_EQ(stripLeadingTrailingWhiteSpace(buf), buf);
    EXPECT_STREQ(buf, c.out) << '"' << c.in << '"';
  }
}

TEST(Locale, NotAvailableAndDecimalPointFollowTheThreadLocale) {
  const char *expected[10] = {"N/A",      "N/D",    "N/D",    "k. A.",  "N/D",
                              "該当なし", "n.v.t.", "不适用", "不適用", "해당 없음"};
  const char points[] = ".,,,,.,...";
  for (int i = 0; i < 10; ++i) {
    setThreadLocale(i);
    EXPECT_STREQ(mc_gettext("N/A"), expected[i]) << i;
    EXPECT_EQ(getDecimalPointForCurrentTask(), points[i]) << i;
  }
  setThreadLocale(42); // out of range: English
  EXPECT_EQ(getThreadLocale(), 0);
  const char *other = "Unknown"; // other messages pass through
  EXPECT_EQ(mc_gettext(other), other);
  EXPECT_EQ(mc_gettext(nullptr), nullptr);

  // The locale is per thread: another thread starts in English.
  setThreadLocale(3);
  std::string seen;
  char point = 0;
  std::thread([&] {
    seen = mc_gettext("N/A");
    point = getDecimalPointForCurrentTask();
  }).join();
  EXPECT_EQ(seen, "N/A");
  EXPECT_EQ(point, '.');
  EXPECT_STREQ(mc_gettext("N/A"), "k. A.");
  setThreadLocale(0);
}

TEST(BoundedOperations, NeverOverrunAndReportOverflow) {
  LogCapture log;
  char buf[8];
  std::memset(buf, '#', sizeof buf);
  EXPECT_EQ(snprintfAssert(buf, 4, "%s", "abcdef"), 3);
  EXPECT_STREQ(buf, "abc");
  EXPECT_EQ(buf[4], '#');
  EXPECT_EQ(snprintfAssert(buf, 8, "%d", 42), 2);

  std::memset(buf, '#', sizeof buf);
  EXPECT_STREQ(strcpyAssert(buf, "0123456789", 5), "0123");
  EXPECT_EQ(buf[5], '#');
  EXPECT_STREQ(strcpyAssert(buf, nullptr, 5), "");
  EXPECT_STREQ(strcpyAssert(buf, "abcd", 5), "abcd");

  std::memset(buf, '#', sizeof buf);
  memsetAssert(buf, 0, 100, 4);
  EXPECT_EQ(buf[3], 0);
  EXPECT_EQ(buf[4], '#');
  memsetAssert(buf, 'x', 2, 4);
  EXPECT_EQ(buf[1], 'x');

  EXPECT_EQ(log.texts(LogCapture::Route::Assert),
            (std::vector<std::string>{"snprintfAssert: output truncated",
                                      "strcpyAssert: source too long",
                                      "memsetAssert: count exceeds the destination"}));
}

} // namespace
