// Formatting helpers, the thread locale and the bounded string operations.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using services::user::Preferences;

TEST(GetSizeString, UnitsBasesAndPrecision) {
  const auto A = Preferences::UNITS_AUTO;
  struct Case { std::uint64_t bytes; Preferences::StorageUnit units; int precision, base; const char *number, *unit; }
  cases[] = {
      {999, A, 2, 10, "999.00", "B"}, {1000, A, 2, 10, "1.00", "KB"}, {1023, A, 2, 2, "1023.00", "B"},
      {1024, A, 2, 2, "1.00", "KiB"}, {1048576, A, 0, 10, "1", "MB"}, {999999999999ull, A, 1, 10, "1000.0", "GB"},
      {5000000000000000000ull, A, 3, 10, "5000.000", "PB"}, {1048576, Preferences::UNITS_TB, 2, 10, "0.00", "TB"},
      {1099511627776ull, Preferences::UNITS_GB, 2, 2, "1024.00", "GiB"},
      {1048576, Preferences::UNITS_MB, 2, 16, "1.05", "MB"}, // other bases: 10
  };
  for (const auto &c : cases) {
    char number[20], unit[8];
    getSizeString(c.bytes, c.units, static_cast<std::uint8_t>(c.precision), c.base, number, unit);
    EXPECT_EQ(std::string(number) + " " + unit, std::string(c.number) + " " + c.unit) << c.bytes << " base " << c.base;
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

// "N/A" and the decimal point in each locale; out of range is English,
// other messages pass through. Per thread: another thread starts in English
// whatever this one chose.
TEST(Locale, NotAvailableAndDecimalPointFollowTheThreadLocale) {
  const char *expected[10] = {"N/A .", "N/D ,", "N/D ,",    "k. A. ,", "N/D ,",
                              "該当なし .", "n.v.t. ,", "不适用 .", "不適用 .", "해당 없음 ."};
  auto local = [] { return mc_gettext("N/A") + std::string(" ") + getDecimalPointForCurrentTask(); };
  for (int i = 0; i < 10; ++i) {
    setThreadLocale(i);
    EXPECT_EQ(local(), expected[i]) << i;
  }
  setThreadLocale(42);
  EXPECT_EQ(getThreadLocale(), 0);
  const char *other = "Unknown";
  EXPECT_TRUE(mc_gettext(other) == other && mc_gettext(nullptr) == nullptr);
  setThreadLocale(3);
  std::string seen;
  std::thread([&] { seen = local(); }).join();
  EXPECT_EQ(seen + " / " + local(), "N/A . / k. A. ,");
  setThreadLocale(0);
}

TEST(BoundedOperations, NeverOverrunAndReportOverflow) {
  qeltest::LogCapture log;
  char buf[8];
  auto fresh = [&buf] { return static_cast<char *>(std::memset(buf, '#', sizeof buf)); };
  EXPECT_EQ(snprintfAssert(fresh(), 4, "%s", "abcdef"), 3);
  EXPECT_EQ(std::string(buf, 5), std::string("abc\0#", 5));
  EXPECT_EQ(std::string(strcpyAssert(fresh(), "0123456789", 5), 6), std::string("0123\0#", 6));
  EXPECT_STREQ(strcpyAssert(buf, nullptr, 5), "");
  EXPECT_STREQ(strcpyAssert(buf, "abcd", 5), "abcd"); // exactly fits
  memsetAssert(fresh(), 0, 100, 4);
  memsetAssert(buf, 'x', 2, 4);
  EXPECT_EQ(std::string(buf, 5), std::string("xx\0\0#", 5));

  EXPECT_EQ(log.texts(qeltest::LogCapture::Route::Assert),
            (std::vector<std::string>{"snprintfAssert: output truncated", "strcpyAssert: source too long",
                                      "memsetAssert: count exceeds the destination"}));
}

} // namespace
