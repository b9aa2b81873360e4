// Buffer, put and buffer streams: the byte-exact behaviour clients rely on
// when a buffer fills, and the positions' clamping rules.
#include "support/log_capture.h"

#include <gtest/gtest.h>

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

TEST(Buffer, AdvanceBeyondTheLimitsRaisesWithItsOwnSource) {
  const char *write = "virtual void utility::Buffer::WriteAdvance(int)";
  const char *read = "virtual void utility::Buffer::ReadAdvance(int)";
  for (int n : {9, -1}) { // past the capacity or backwards
    BufferStream w(8), r(8);
    w.PutS("abc");
    r.PutS("abc");
    expectOverflow([&] { w.WriteAdvance(n); }, "src/util/ut_Buffer", 165, write);
    expectOverflow([&] { r.ReadAdvance(n < 0 ? n : 4); }, "src/util/ut_Buffer", 185, read);
  }
}

TEST(Buffer, AdvanceUnderSilentTruncationClamps) {
  BufferStream s(8);
  s.setSilentTruncation(true);
  s.PutS("abcdef");
  s.ReadAdvance(2);
  s.WriteAdvance(100); // clamped to the capacity
  EXPECT_EQ(s.WritePosition(), 8);
  s.WriteAdvance(-100); // raised back to the read position
  EXPECT_EQ(s.WritePosition(), 2);
  s.Rewind();
  s.PutS("xy");
  s.ReadAdvance(-1); // below zero: stays at 0
  EXPECT_STREQ(s.pTail(), "xy");
  s.ReadAdvance(50); // past the head: stops at it
  EXPECT_EQ(s.ReadAvailable(), 0);
  EXPECT_EQ(s.WritePosition(), 2);
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
  framework::Memory::setFailAfter(0);
  BufferStream s(64);
  framework::Memory::setFailAfter(-1);
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
