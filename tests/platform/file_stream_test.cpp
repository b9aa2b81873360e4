// FileStream: output of any length reaches the descriptor intact and in
// order, whatever mix of writers produced it; write errors stay harmless.
#include <qel/qel.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace {

// Over a megabyte through a 97-byte buffer: a full buffer is delivered,
// never cut or raised, and the destructor delivers the rest.
TEST(FileStream, DeliversMegabytesThroughASmallBuffer) {
  char path[] = "/tmp/qel_file_stream_XXXXXX";
  const int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  auto contents = [&path] {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  std::string expected;
  {
    utility::FileStream out(fd, 97);
    for (int i = 0; i < 40000; ++i) {
      const std::string big(i % 1000 ? 0 : 5000 + i / 100, 'q');
      out.PutF("row %d|%s", i, big.c_str());
      out.PutS("cell, ");
      out.PutC('x');
      out.Indent(i % 7);
      out.PutB("\0z", 2);
      expected += "row " + std::to_string(i) + "|" + big + "cell, x" + std::string(i % 7, ' ') + std::string("\0z", 2);
    }
    out.PutS("pending");
    expected += "pending";
    EXPECT_TRUE(out.FlushOutputStream()); // and frees the buffer: nothing is delivered twice
    EXPECT_EQ(contents(), expected);
    out.PutS("tail");
  }
  EXPECT_EQ(contents(), expected + "tail");
  close(fd);
  unlink(path);
}

TEST(FileStream, WriteErrorsAreStickyAndHarmless) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  close(fds[0]); // nobody reads: writes fail with EPIPE
  signal(SIGPIPE, SIG_IGN);
  utility::FileStream out(fds[1], 8);
  for (int i = 0; i < 100; ++i)
    out.PutS("more text than fits");
  EXPECT_TRUE(out.isOutputStreamInError() && !out.isOutputStreamOpen());
  EXPECT_FALSE(out.FlushOutputStream());
  close(fds[1]);
}

} // namespace
