// FileStream: a put stream that writes its buffer to a file descriptor
// whenever it fills, so output of any length arrives intact.
#include <qel/platform/streams.h>

#include <cerrno>
#include <unistd.h>

namespace utility {

FileStream::FileStream(int fd, int size) : m_fd(fd) {
  capacity = size < 1 ? 1 : size;
  allocBuffer();
}

FileStream::~FileStream() { FlushOutputStream(); }

bool FileStream::FlushOutputStream() {
  const char *p = pTail();
  int left = ReadAvailable();
  while (left > 0 && !m_failed) {
    ssize_t n = ::write(m_fd, p, static_cast<size_t>(left));
    if (n < 0) {
      if (errno == EINTR)
        continue;
      m_failed = true;
      break;
    }
    p += n;
    left -= static_cast<int>(n);
  }
  // Delivered or, after a write error, discarded: either way the buffer is
  // free again, so writers never block on a failed descriptor.
  Rewind();
  return !m_failed;
}

bool FileStream::isOutputStreamOpen() const { return m_fd >= 0 && !m_failed; }
bool FileStream::isOutputStreamInError() const { return m_failed; }
bool FileStream::isOutputStreamAtEnd() const { return false; }

} // namespace utility
