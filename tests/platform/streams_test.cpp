// Buffer, put and buffer streams: the byte-exact behaviour clients rely on
// when a buffer fills, and the positions' clamping rules.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>

namespace {

using utility::BufferStream;

// Runs \p body, expecting it to raise the framework's overflow exception
// naming \p function at \p file:\p line.
template <typename F>
void expectOverflow(F body, const char *file, int line, const char *function) {
  try {
    body();
  } catch (framework::Exception *raised) {
    std::unique_ptr<framework::Exception> e(raised);
    EXPECT_EQ(e->code(), 1239u);
    EXPECT_STREQ(e->file(), file);
    EXPECT_EQ(e->line(), line);
    EXPECT_STREQ(e->function(), function);
    EXPECT_STREQ(e->message(), "");
    EXPECT_TRUE(e->flag());
    return;
  }
  ADD_FAILURE() << "no overflow raised";
}

const char kPutFile[] = "src/util/ut_PutStream", kPutC[] = "void utility::PutStream::PutC(char)";

// Every writer behaves like a run of PutC calls: what fits is written and
// terminated, then the rest is dropped (silent truncation) or raises PutC's
// exception.
TEST(BufferStream, WritesCrossingTheEndBehaveLikePutC) {
  struct Case {
    void (*write)(BufferStream &);
    const char *kept;
  } cases[] = {
      {[](BufferStream &s) { for (char c : std::string("0123456789")) s.PutC(c); }, "012345"},
      {[](BufferStream &s) { s.PutS("0123456789"); }, "012345"},
      {[](BufferStream &s) { s.PutF("%s%d", "01234", 56789); }, "012345"},
      {[](BufferStream &s) { s.PutB("0123456789", 10); }, "012345"},
      {[](BufferStream &s) { s.PutNChar(10, '0'); }, "000000"},
      {[](BufferStream &s) { s.Indent(10); }, "      "},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(&c - cases);
    BufferStream cut(6);
    cut.setSilentTruncation(true);
    c.write(cut);
    EXPECT_STREQ(cut.pTail(), c.kept);
    EXPECT_TRUE(cut.isOutputStreamAtEnd());
    EXPECT_FALSE(cut.isOutputStreamGood());
    EXPECT_EQ(cut.WriteRemaining(), 0);

    BufferStream strict(6);
    expectOverflow([&] { c.write(strict); }, kPutFile, 113, kPutC);
    EXPECT_STREQ(strict.pTail(), c.kept);
  }
}

TEST(BufferStream, LengthBoundaries) {
  BufferStream exact(5); // a write that exactly fills the buffer fits
  exact.PutS("ab");
  exact.PutF("%d", 123);
  EXPECT_STREQ(exact.pTail(), "ab123");
  EXPECT_EQ(exact.WriteRemaining(), 0);

  BufferStream big(3000); // longer than any internal formatting buffer
  big.setSilentTruncation(true);
  big.PutF("<%s>", std::string(5000, 'x').c_str());
  EXPECT_EQ(std::string(big.pTail()), "<" + std::string(2999, 'x'));

  BufferStream wide(1000); // longer than the run of spaces Indent copies from
  wide.Indent(300);
  wide.PutC('x');
  EXPECT_EQ(std::string(wide.pTail()), std::string(300, ' ') + "x");

  BufferStream none(10); // non-positive counts and null text write nothing
  none.PutNChar(-3, '-');
  none.PutNChar(0, '-');
  none.Indent(-5);
  none.PutB("abc", -1);
  none.PutS(nullptr);
  EXPECT_EQ(none.ReadAvailable(), 0);
}

// An advance keeps 0 <= readPos <= writePos <= capacity whatever n is: out
// of range it clamps, then raises unless truncation is silent, so a caller
// that catches the exception goes on with a valid stream. Positions start at
// read 2, write 6 of 8.
TEST(Buffer, AdvancesClampThenRaise) {
  const char *write = "virtual void utility::Buffer::WriteAdvance(int)";
  const char *read = "virtual void utility::Buffer::ReadAdvance(int)";
  struct Case {
    bool head; // WriteAdvance, else ReadAdvance
    int n, readPos, writePos;
    bool raises;
  } cases[] = {
      {true, 2, 2, 8, false},        {true, 3, 2, 8, true},
      {true, INT_MAX, 2, 8, true},   {true, -1, 2, 5, true},
      {true, -100, 2, 2, true},      {true, INT_MIN, 2, 2, true},
      {false, 4, 6, 6, false},       {false, 5, 6, 6, true},
      {false, INT_MAX, 6, 6, true},  {false, -1, 1, 6, true},
      {false, INT_MIN, 0, 6, true},
  };
  for (const auto &c : cases) {
    for (bool silent : {true, false}) {
      SCOPED_TRACE(testing::Message() << (c.head ? "write " : "read ") << c.n
                                      << (silent ? " silent" : " strict"));
      BufferStream s(8);
      s.PutS("abcdef");
      s.ReadAdvance(2);
      s.setSilentTruncation(silent);
      auto advance = [&] { c.head ? s.WriteAdvance(c.n) : s.ReadAdvance(c.n); };
      if (c.raises && !silent)
        expectOverflow(advance, "src/util/ut_Buffer", c.head ? 165 : 185, c.head ? write : read);
      else
        advance();
      EXPECT_EQ(s.WritePosition(), c.writePos);
      EXPECT_EQ(s.ReadAvailable(), c.writePos - c.readPos);
      // Still usable: text after it stays inside the storage.
      s.setSilentTruncation(true);
      s.PutF("%s", "wxyz");
      s.PutS("wxyz");
      EXPECT_EQ(s.WritePosition(), std::min(8, c.writePos + 8));
      char block[16];
      EXPECT_EQ(s.ReceiveInputStream(block, sizeof block), s.WritePosition() - c.readPos);
    }
  }
}

TEST(OutputStream, TransferFromInputStream) {
  BufferStream in(40000), out(40000), cut(4);
  for (int i = 0; i < 3000; ++i)
    in.PutF("%d,", i);
  const std::string expected = in.pTail();
  EXPECT_TRUE(out.TransferFromInputStream(in)); // read in chunks until its end
  EXPECT_EQ(expected, out.pTail());
  EXPECT_TRUE(in.StartInputStream()); // reading again from the start
  cut.setSilentTruncation(true);
  EXPECT_FALSE(cut.TransferFromInputStream(in)) << "send cut short";
  EXPECT_EQ(std::string(cut.pTail()), expected.substr(0, 4));
}

TEST(Debug, CategoryBounds) {
  for (unsigned c : {0u, 8191u, 8192u}) // the last is out of range: ignored
    utility::Debug::setDebugOn(c, true);
  EXPECT_TRUE(IsDebugOn(0) && IsDebugOn(8191));
  EXPECT_FALSE(IsDebugOn(8190) || IsDebugOn(8192) || IsDebugOn(0xffffffffu));
  utility::Debug::setDebugOn(0, false);
  utility::Debug::setDebugOn(8191, false);
  EXPECT_FALSE(IsDebugOn(0) || IsDebugOn(8191));
}

TEST(BufferStream, StorageComesFromTheFrameworkAllocator) {
  long before = framework::Memory::liveAllocations();
  {
    BufferStream s(128);
    EXPECT_EQ(framework::Memory::liveAllocations(), before + 1);
  }
  EXPECT_EQ(framework::Memory::liveAllocations(), before);

  // Without storage every write is dropped or raises.
  framework::testing::setFailAfter(0);
  BufferStream s(64);
  framework::testing::setFailAfter(-1);
  EXPECT_EQ(s.Capacity(), 0);
  EXPECT_STREQ(s.pTail(), "");
  s.setSilentTruncation(true);
  s.PutS("text");
  s.PutF("%d", 42);
  s.Indent(3);
  EXPECT_EQ(s.ReadAvailable(), 0);
  s.setSilentTruncation(false);
  expectOverflow([&] { s.PutC('x'); }, kPutFile, 113, kPutC);
}

} // namespace
