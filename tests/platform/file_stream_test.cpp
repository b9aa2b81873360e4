// FileStream: output of any length reaches the descriptor intact, in order,
// whatever mix of writers produced it.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

// A temporary file, removed at the end of the test.
class TempFile {
public:
  TempFile() {
    char name[] = "/tmp/qel_file_stream_XXXXXX";
    fd_ = mkstemp(name);
    path_ = name;
  }
  ~TempFile() {
    if (fd_ >= 0)
      close(fd_);
    unlink(path_.c_str());
  }
  int fd() const { return fd_; }
  std::string contents() const {
    std::ifstream in(path_, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
  }

private:
  int fd_;
  std::string path_;
};

TEST(FileStream, DeliversMegabytesThroughASmallBuffer) {
  TempFile file;
  ASSERT_GE(file.fd(), 0);
  std::string expected;
  {
    utility::FileStream out(file.fd(), 97);
    for (int i = 0; i < 40000; ++i) {
      out.PutF("row %d|", i);
      expected += "row " + std::to_string(i) + "|";
      out.PutS("some cell text, ");
      expected += "some cell text, ";
      out.PutC('x');
      expected += 'x';
      out.Indent(i % 7);
      expected += std::string(i % 7, ' ');
      out.PutB("\0z", 2);
      expected += std::string("\0z", 2);
      if (i % 1000 == 0) {
        std::string big(5000 + i / 100, 'q');
        out.PutF("[%s]", big.c_str());
        expected += "[" + big + "]";
      }
    }
    EXPECT_FALSE(out.isOutputStreamInError());
  } // the destructor delivers the rest
  EXPECT_GT(expected.size(), 1000000u);
  EXPECT_EQ(file.contents(), expected);
}

TEST(FileStream, FlushDeliversPendingText) {
  TempFile file;
  utility::FileStream out(file.fd(), 4096);
  out.PutS("pending");
  EXPECT_EQ(file.contents(), "");
  EXPECT_TRUE(out.FlushOutputStream());
  EXPECT_EQ(file.contents(), "pending");
  EXPECT_EQ(out.ReadAvailable(), 0);
}

TEST(FileStream, NeverTruncatesOrRaisesWhenFull) {
  TempFile file;
  {
    utility::FileStream out(file.fd(), 1);
    out.setSilentTruncation(false);
    out.PutS("abcdef");
    out.PutF("%05d", 42);
  }
  EXPECT_EQ(file.contents(), "abcdef00042");
}

TEST(FileStream, WriteErrorsAreStickyAndHarmless) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  close(fds[0]); // nobody reads: writes fail with EPIPE
  signal(SIGPIPE, SIG_IGN);
  utility::FileStream out(fds[1], 8);
  for (int i = 0; i < 100; ++i)
    out.PutS("more text than fits");
  EXPECT_TRUE(out.isOutputStreamInError());
  EXPECT_FALSE(out.isOutputStreamOpen());
  EXPECT_FALSE(out.FlushOutputStream());
  close(fds[1]);
}

} // namespace
