// Buffer, put and buffer streams: the byte-exact behaviour clients rely on
// when a buffer fills, and the positions' clamping rules.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string>
#include <tuple>

namespace {

using utility::BufferStream;

// Runs \p body, expecting it to raise the framework's overflow exception
// naming \p function at \p file:\p line.
template <typename F>
void expectOverflow(F body, const char *file, int line, const char *function) {
  try {
    body();
    ADD_FAILURE() << "no overflow raised";
  } catch (framework::Exception *raised) {
    std::unique_ptr<framework::Exception> e(raised);
    EXPECT_EQ(std::make_tuple(e->code(), std::string(e->file()), e->line(), std::string(e->function()),
                              std::string(e->message()), e->flag()),
              std::make_tuple(1239u, std::string(file), line, std::string(function), std::string(), true));
  }
}

const char kPutFile[] = "src/util/ut_PutStream", kPutC[] = "void utility::PutStream::PutC(char)";

// Every writer behaves like a run of PutC calls: what fits is written and
// terminated, then the rest is dropped (silent truncation) or raises PutC's
// exception. Writes longer than the formatter's buffer or the run of spaces
// Indent copies from arrive whole; non-positive counts and null text write
// nothing. Without storage (the framework allocator failed) every write is
// dropped or raises.
TEST(BufferStream, WritesUpToTheEndBehaveLikePutC) {
  struct Case { int capacity; void (*write)(BufferStream &); std::string kept; bool overflows; } cases[] = {
      {6, [](BufferStream &s) { for (char c : std::string("0123456789")) s.PutC(c); }, "012345", true},
      {6, [](BufferStream &s) { s.PutS("0123456789"); }, "012345", true},
      {6, [](BufferStream &s) { s.PutF("%s%d", "01234", 56789); }, "012345", true},
      {6, [](BufferStream &s) { s.PutB("0123456789", 10); }, "012345", true},
      {6, [](BufferStream &s) { s.PutNChar(10, '0'); }, "000000", true},
      {6, [](BufferStream &s) { s.Indent(10); }, "      ", true},
      {5, [](BufferStream &s) { s.PutS("ab"), s.PutF("%d", 123); }, "ab123", false}, // exactly full
      {3000, [](BufferStream &s) { s.PutF("<%s>", std::string(5000, 'x').c_str()); },
       "<" + std::string(2999, 'x'), true},
      {1000, [](BufferStream &s) { s.Indent(300), s.PutC('x'); }, std::string(300, ' ') + "x", false},
      {10, [](BufferStream &s) { s.PutNChar(-3, '-'), s.PutNChar(0, '-'), s.Indent(-5), s.PutB("abc", -1); }, "", false},
      {10, [](BufferStream &s) { s.PutS(nullptr); }, "", false},
      {-64, [](BufferStream &s) { s.PutS("text"), s.PutF("%d", 42), s.Indent(3), s.PutC('x'); }, "", true},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(&c - cases);
    framework::testing::setFailAfter(c.capacity < 0 ? 0 : -1, true); // negative: no storage
    BufferStream cut(std::abs(c.capacity)), strict(std::abs(c.capacity));
    framework::testing::setFailAfter(-1);
    EXPECT_EQ(cut.Capacity(), std::max(c.capacity, 0));
    cut.setSilentTruncation(true);
    c.write(cut);
    EXPECT_EQ(cut.pTail(), c.kept);
    if (c.overflows) { // at end, not good, no room
      EXPECT_EQ(std::make_tuple(cut.isOutputStreamAtEnd(), cut.isOutputStreamGood(), cut.WriteRemaining()),
                std::make_tuple(true, false, 0));
    }
    if (c.overflows)
      expectOverflow([&] { c.write(strict); }, kPutFile, 113, kPutC);
    else
      c.write(strict);
    EXPECT_EQ(strict.pTail(), c.kept);
  }
}

// An advance keeps 0 <= readPos <= writePos <= capacity whatever n is: out
// of range it clamps, then raises unless truncation is silent, so a caller
// that catches the exception goes on with a valid stream. Positions start at
// read 2, write 6 of 8.
TEST(Buffer, AdvancesClampThenRaise) {
  struct Case { bool head; int n, readPos, writePos; bool raises; } cases[] = { // head: WriteAdvance, else ReadAdvance
      {true, 2, 2, 8, false},   {true, 3, 2, 8, true},   {true, INT_MAX, 2, 8, true},
      {true, -1, 2, 5, true},   {true, -100, 2, 2, true}, {true, INT_MIN, 2, 2, true},
      {false, 4, 6, 6, false},  {false, 5, 6, 6, true},  {false, INT_MAX, 6, 6, true},
      {false, -1, 1, 6, true},  {false, INT_MIN, 0, 6, true},
  };
  for (const auto &c : cases) {
    for (bool silent : {true, false}) {
      SCOPED_TRACE(testing::Message() << (c.head ? "write " : "read ") << c.n << (silent ? " silent" : " strict"));
      BufferStream s(8);
      s.PutS("abcdef");
      s.ReadAdvance(2);
      s.setSilentTruncation(silent);
      auto advance = [&] { c.head ? s.WriteAdvance(c.n) : s.ReadAdvance(c.n); };
      if (c.raises && !silent)
        expectOverflow(advance, "src/util/ut_Buffer", c.head ? 165 : 185,
                       c.head ? "virtual void utility::Buffer::WriteAdvance(int)"
                              : "virtual void utility::Buffer::ReadAdvance(int)");
      else
        advance();
      EXPECT_EQ(std::make_pair(s.WritePosition(), s.ReadAvailable()),
                std::make_pair(c.writePos, c.writePos - c.readPos));
      // Still usable: text after it stays inside the storage.
      s.setSilentTruncation(true);
      s.PutF("%s%s", "wxyz", "wxyz");
      EXPECT_EQ(s.WritePosition(), std::min(8, c.writePos + 8));
      char block[16];
      EXPECT_EQ(s.ReceiveInputStream(block, sizeof block), s.WritePosition() - c.readPos);
    }
  }
}

TEST(Debug, CategoryBounds) {
  for (unsigned c : {0u, 8191u, 8192u}) // the last is out of range: ignored
    utility::Debug::setDebugOn(c, true);
  EXPECT_TRUE(IsDebugOn(0) && IsDebugOn(8191) && !IsDebugOn(8190) && !IsDebugOn(8192) && !IsDebugOn(0xffffffffu));
  for (unsigned c : {0u, 8191u})
    utility::Debug::setDebugOn(c, false);
  EXPECT_FALSE(IsDebugOn(0) || IsDebugOn(8191));
}

} // namespace
