// Buffer, put, get and buffer streams: the byte-exact behaviour clients rely
// on when a buffer fills, and the positions' clamping rules.
#include "support/log_capture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using utility::BufferStream;

// Runs \p body, expecting it to throw the framework's overflow exception;
// returns it (owned) for inspection.
template <typename F> std::unique_ptr<framework::Exception> overflowOf(F body) {
  try {
    body();
  } catch (framework::Exception *e) {
    return std::unique_ptr<framework::Exception>(e);
  }
  return nullptr;
}

TEST(BufferStream, SilentTruncationKeepsThePrefixAndTerminates) {
  BufferStream s(4);
  s.setSilentTruncation(true);
  for (char c : std::string("abcdefghij"))
    s.PutC(c);
  EXPECT_STREQ(s.pTail(), "abcd");
  EXPECT_TRUE(s.isOutputStreamAtEnd());
  EXPECT_FALSE(s.isOutputStreamGood());
  EXPECT_EQ(s.WriteRemaining(), 0);
}

TEST(BufferStream, OverflowRaisesOnTheFifthCharacter) {
  BufferStream s(4);
  s.PutS("abcd");
  EXPECT_STREQ(s.pTail(), "abcd");
  auto e = overflowOf([&] { s.PutC('e'); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), 1239u);
  EXPECT_STREQ(e->file(), "src/util/ut_PutStream");
  EXPECT_EQ(e->line(), 113);
  EXPECT_STREQ(e->function(), "void utility::PutStream::PutC(char)");
  EXPECT_STREQ(e->message(), "");
  EXPECT_TRUE(e->flag());
  EXPECT_STREQ(s.pTail(), "abcd");
}

// Every writer behaves like a run of PutC calls: what fits is written, then
// the rest is dropped (silent truncation) or raises PutC's exception.
TEST(BufferStream, WritesCrossingTheEndBehaveLikePutC) {
  struct Case {
    const char *name;
    void (*write)(BufferStream &);
  } cases[] = {
      {"PutS", [](BufferStream &s) { s.PutS("0123456789"); }},
      {"PutF", [](BufferStream &s) { s.PutF("%s%d", "01234", 56789); }},
      {"PutB", [](BufferStream &s) { s.PutB("0123456789", 10); }},
      {"PutNChar", [](BufferStream &s) { s.PutNChar(10, '0'); }},
      {"Indent", [](BufferStream &s) { s.Indent(10); }},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    BufferStream cut(6);
    cut.setSilentTruncation(true);
    c.write(cut);
    EXPECT_EQ(cut.ReadAvailable(), 6);
    EXPECT_EQ(cut.pTail()[6], '\0');

    BufferStream strict(6);
    auto e = overflowOf([&] { c.write(strict); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->code(), 1239u);
    EXPECT_EQ(e->line(), 113);
    EXPECT_EQ(strict.ReadAvailable(), 6);
    EXPECT_EQ(std::string(cut.pTail()), std::string(strict.pTail()));
  }
}

TEST(BufferStream, PutFFormats) {
  BufferStream s(200);
  s.PutF("[%s|%d|%02x|%08x|%.2f]", "ab", -7, 10, 255, 2.0);
  EXPECT_STREQ(s.pTail(), "[ab|-7|0a|000000ff|2.00]");
  s.PutF("%s", "");
  EXPECT_STREQ(s.pTail(), "[ab|-7|0a|000000ff|2.00]");
}

TEST(BufferStream, PutFExactlyFillingTheBufferFits) {
  BufferStream s(5);
  s.PutS("ab");
  s.PutF("%d", 123);
  EXPECT_STREQ(s.pTail(), "ab123");
  EXPECT_EQ(s.WriteRemaining(), 0);
}

TEST(BufferStream, LongFormattedTextIsCutAtTheCapacity) {
  BufferStream s(3000);
  s.setSilentTruncation(true);
  std::string big(5000, 'x');
  s.PutF("<%s>", big.c_str());
  EXPECT_EQ(s.ReadAvailable(), 3000);
  EXPECT_EQ(std::string(s.pTail()), "<" + std::string(2999, 'x'));
}

TEST(BufferStream, NonPositiveCountsWriteNothing) {
  BufferStream s(10);
  s.PutNChar(-3, '-');
  s.PutNChar(0, '-');
  s.Indent(0);
  s.Indent(-5);
  s.PutB("abc", -1);
  s.PutS(nullptr);
  EXPECT_EQ(s.ReadAvailable(), 0);
  EXPECT_STREQ(s.pTail(), "");
}

TEST(BufferStream, IndentLongerThanTheSpaceRun) {
  BufferStream s(1000);
  s.Indent(300);
  s.PutC('x');
  EXPECT_EQ(std::string(s.pTail()), std::string(300, ' ') + "x");
}

TEST(Buffer, AdvanceBeyondTheLimitsRaisesWithItsOwnSource) {
  struct Case {
    const char *name;
    void (*advance)(BufferStream &);
    int line;
    const char *function;
  } cases[] = {
      {"write past capacity", [](BufferStream &s) { s.WriteAdvance(9); }, 165,
       "virtual void utility::Buffer::WriteAdvance(int)"},
      {"write backwards", [](BufferStream &s) { s.WriteAdvance(-1); }, 165,
       "virtual void utility::Buffer::WriteAdvance(int)"},
      {"read past head", [](BufferStream &s) { s.ReadAdvance(4); }, 185,
       "virtual void utility::Buffer::ReadAdvance(int)"},
      {"read backwards", [](BufferStream &s) { s.ReadAdvance(-1); }, 185,
       "virtual void utility::Buffer::ReadAdvance(int)"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    BufferStream s(8);
    s.PutS("abc");
    auto e = overflowOf([&] { c.advance(s); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->code(), 1239u);
    EXPECT_STREQ(e->file(), "src/util/ut_Buffer");
    EXPECT_EQ(e->line(), c.line);
    EXPECT_STREQ(e->function(), c.function);
  }
}

TEST(Buffer, AdvanceUnderSilentTruncationClamps) {
  BufferStream s(8);
  s.setSilentTruncation(true);
  s.PutS("abcdef");
  s.ReadAdvance(2);
  EXPECT_STREQ(s.pTail(), "cdef");

  s.WriteAdvance(100); // clamped to the capacity
  EXPECT_EQ(s.WritePosition(), 8);
  s.WriteAdvance(-100); // raised back to the read position
  EXPECT_EQ(s.WritePosition(), 2);
  EXPECT_EQ(s.ReadAvailable(), 0);

  s.Rewind();
  s.PutS("xy");
  s.ReadAdvance(-1); // below zero: stays at 0
  EXPECT_STREQ(s.pTail(), "xy");
  s.ReadAdvance(50); // past the head: stops at it
  EXPECT_EQ(s.ReadAvailable(), 0);
}

TEST(Buffer, RewindEmptiesAndStartOutputStreamRewinds) {
  BufferStream s(8);
  s.PutS("abc");
  s.ReadAdvance(1);
  s.Rewind();
  EXPECT_EQ(s.WritePosition(), 0);
  EXPECT_STREQ(s.pTail(), "");
  s.PutS("de");
  EXPECT_TRUE(s.StartOutputStream());
  EXPECT_STREQ(s.pTail(), "");
  EXPECT_TRUE(s.isOutputStreamGood());
}

TEST(GetStream, ReadsBackWhatWasWritten) {
  BufferStream s(16);
  s.PutS("hello world");
  EXPECT_EQ(s[0], 'h');
  EXPECT_EQ(s[10], 'd');
  EXPECT_EQ(s[11], '\0');
  char out[8] = {};
  EXPECT_EQ(s.ReceiveInputStream(out, 5), 5);
  EXPECT_EQ(std::string(out, 5), "hello");
  EXPECT_STREQ(s.pTail(), " world");
  EXPECT_TRUE(s.isInputStreamGood());
  EXPECT_EQ(s.ReceiveInputStream(out, 8), 6);
  EXPECT_TRUE(s.isInputStreamAtEnd());
  EXPECT_EQ(s.ReceiveInputStream(out, 8), 0);
  EXPECT_TRUE(s.StartInputStream());
  EXPECT_STREQ(s.pTail(), "hello world");
  EXPECT_EQ(s.GetInputStreamSize(), -1);
}

// An input stream whose reads follow a script, for TransferFromInputStream.
class ScriptedInput : public framework::InputStream {
public:
  ScriptedInput(std::vector<int> reads, bool errorAtEnd, bool atEnd)
      : reads_(std::move(reads)), errorAtEnd_(errorAtEnd), atEnd_(atEnd) {}
  bool StartInputStream() override { return true; }
  void EndInputStream() override {}
  int ReceiveInputStream(char *data, unsigned n) override {
    int r = reads_[next_++];
    for (int i = 0; i < r && static_cast<unsigned>(i) < n; ++i)
      data[i] = static_cast<char>('a' + i % 26);
    return r;
  }
  bool isInputStreamOpen() const override { return next_ < reads_.size(); }
  bool isInputStreamInError() const override {
    return next_ >= reads_.size() && errorAtEnd_;
  }
  bool isInputStreamAtEnd() const override {
    return next_ >= reads_.size() && atEnd_;
  }

private:
  std::vector<int> reads_;
  std::size_t next_ = 0;
  bool errorAtEnd_, atEnd_;
};

TEST(OutputStream, TransferFromInputStreamResults) {
  struct Case {
    const char *name;
    std::vector<int> reads;
    bool errorAtEnd, atEnd;
    int capacity;
    bool silent;
    bool expected;
    int written;
  } cases[] = {
      {"first read returns 0", {0, 5}, false, true, 64, false, true, 0},
      {"reads until the input ends", {3, 4}, false, true, 64, false, true, 7},
      {"read error", {3, -1}, false, true, 64, false, false, 3},
      {"input ends in error", {3}, true, true, 64, false, false, 3},
      {"input stops before its end", {3}, false, false, 64, false, false, 3},
      {"send cut short", {10}, false, true, 4, true, false, 4},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedInput in(c.reads, c.errorAtEnd, c.atEnd);
    BufferStream out(c.capacity);
    out.setSilentTruncation(c.silent);
    EXPECT_EQ(out.TransferFromInputStream(in), c.expected);
    EXPECT_EQ(out.ReadAvailable(), c.written);
  }
}

TEST(OutputStream, TransferCopiesABufferStream) {
  BufferStream in(40000);
  for (int i = 0; i < 3000; ++i)
    in.PutF("%d,", i);
  std::string expected = in.pTail();
  BufferStream out(40000);
  EXPECT_TRUE(out.TransferFromInputStream(in));
  EXPECT_EQ(expected, out.pTail());
}

TEST(Debug, CategoryBounds) {
  utility::Debug::setDebugOn(8191, true);
  utility::Debug::setDebugOn(0, true);
  utility::Debug::setDebugOn(8192, true); // ignored
  EXPECT_TRUE(utility::Debug::isDebugOn(8191));
  EXPECT_TRUE(IsDebugOn(0));
  EXPECT_FALSE(utility::Debug::isDebugOn(8192));
  EXPECT_FALSE(IsDebugOn(0xffffffffu));
  EXPECT_FALSE(IsDebugOn(8190));
  utility::Debug::setDebugOn(8191, false);
  utility::Debug::setDebugOn(0, false);
  EXPECT_FALSE(IsDebugOn(8191));
  EXPECT_FALSE(utility::Debug::isDebugOn(0));
}

TEST(BufferStream, StorageComesFromTheFrameworkAllocator) {
  long before = framework::Memory::liveAllocations();
  {
    BufferStream s(128);
    EXPECT_EQ(framework::Memory::liveAllocations(), before + 1);
  }
  EXPECT_EQ(framework::Memory::liveAllocations(), before);
}

TEST(BufferStream, WithoutStorageEveryWriteIsDroppedOrRaises) {
  framework::Memory::setFailAfter(0);
  BufferStream s(64);
  framework::Memory::setFailAfter(-1);
  EXPECT_EQ(s.Capacity(), 0);
  EXPECT_STREQ(s.pTail(), "");
  s.setSilentTruncation(true);
  s.PutS("text");
  s.PutF("%d", 42);
  s.Indent(3);
  s.Rewind();
  EXPECT_EQ(s.ReadAvailable(), 0);
  s.setSilentTruncation(false);
  EXPECT_TRUE(overflowOf([&] { s.PutC('x'); }));
}

} // namespace
