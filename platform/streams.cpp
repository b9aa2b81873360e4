// Buffer, put, get and buffer streams.
//
// The positions move only through the operations below, which keep the
// buffer invariants of streams.h. PutC's inline fast path writes the fields
// directly when there is room; that is what WriteRemaining() > 0 followed by
// WriteAdvance(1) does, without two virtual calls per character.
#include <qel/platform/framework.h>
#include <qel/platform/streams.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

namespace utility {

namespace {

// The overflow exceptions name the framework source that raises them.
[[noreturn]] void throwOverflow(const char *file, int line,
                                const char *function) {
  throw new framework::Exception(1239, file, line, function, "", true);
}

const char kSpaces[] = "                                                    "
                       "                                                    ";

} // namespace

void throwPutOverflow() {
  throwOverflow("src/util/ut_PutStream", 113,
                "void utility::PutStream::PutC(char)");
}

// --- Buffer ---------------------------------------------------------------

Buffer::Buffer()
    : capacity(0), pData(nullptr), writePos(0), readPos(0),
      silentTruncation(false) {}

Buffer::~Buffer() { framework::Memory::StaticFree(pData); }

int Buffer::WriteRemaining() const { return capacity - writePos; }

int Buffer::ReadAvailable() const { return writePos - readPos; }

// An advance out of range first clamps the position, then raises when
// truncation is off: the invariants hold whether or not the caller catches
// the exception. The range checks compare n with the distance to each limit
// instead of adding it to the position, which could overflow int.
void Buffer::WriteAdvance(int n) {
  const bool inRange = n >= 0 && n <= capacity - writePos;
  if (inRange)
    writePos += n;
  else
    writePos = n < 0 ? (n < readPos - writePos ? readPos : writePos + n) : capacity;
  if (pData)
    pData[writePos] = '\0';
  if (inRange || silentTruncation)
    return;
  throwOverflow("src/util/ut_Buffer", 165,
                "virtual void utility::Buffer::WriteAdvance(int)");
}

void Buffer::ReadAdvance(int n) {
  const bool inRange = n >= 0 && n <= writePos - readPos;
  if (inRange)
    readPos += n;
  else
    readPos = n < 0 ? (n < -readPos ? 0 : readPos + n) : writePos;
  if (inRange || silentTruncation)
    return;
  throwOverflow("src/util/ut_Buffer", 185,
                "virtual void utility::Buffer::ReadAdvance(int)");
}

char *Buffer::pHead() const {
  return pData ? pData + writePos : const_cast<char *>("");
}

char *Buffer::pTail() const {
  return pData ? pData + readPos : const_cast<char *>("");
}

void Buffer::Rewind() {
  readPos = writePos = 0;
  if (pData)
    pData[0] = '\0';
}

void Buffer::allocBuffer() {
  framework::Memory::StaticFree(pData);
  if (capacity < 0)
    capacity = 0;
  pData = static_cast<char *>(
      framework::Memory::StaticAlloc(static_cast<std::size_t>(capacity) + 1));
  if (!pData)
    capacity = 0;
  readPos = writePos = 0;
  if (pData)
    pData[0] = '\0';
}

} // namespace utility

// --- OutputStream / InputStream -------------------------------------------

namespace framework {

OutputStream::~OutputStream() = default;

bool OutputStream::FlushOutputStream() { return true; }

bool OutputStream::TransferFromInputStream(InputStream &in) {
  char block[16384];
  while (in.isInputStreamGood()) {
    int n = in.ReceiveInputStream(block, sizeof block);
    if (n < 0)
      return false;
    if (n == 0)
      return true;
    if (!SendOutputStream(block, static_cast<unsigned>(n)))
      return false;
  }
  return !in.isInputStreamInError() && in.isInputStreamAtEnd();
}

bool OutputStream::isOutputStreamGood() const {
  return isOutputStreamOpen() && !isOutputStreamInError() &&
         !isOutputStreamAtEnd();
}

InputStream::~InputStream() = default;

bool InputStream::isInputStreamGood() const {
  return isInputStreamOpen() && !isInputStreamInError() &&
         !isInputStreamAtEnd();
}

int InputStream::GetInputStreamSize() const { return -1; }

void InputStream::setInputMode(InputMode) {}

} // namespace framework

namespace utility {

// --- Decorator ------------------------------------------------------------

Decorator::~Decorator() = default;

void Decorator::setDecoration(DecorationType type) { decoration = type; }

void Decorator::setDecoration(DecorationType type, PutStream *stream) {
  decoration = type;
  decorationStream = stream;
}

// --- PutStream ------------------------------------------------------------

PutStream::PutStream() = default;
PutStream::~PutStream() = default;

bool PutStream::StartOutputStream() {
  Rewind();
  return true;
}

void PutStream::EndOutputStream() {}

bool PutStream::SendOutputStream(const char *data, unsigned n) {
  int count = static_cast<int>(std::min<unsigned>(n, 0x7fffffff));
  return write(data, count) == count;
}

bool PutStream::isOutputStreamOpen() const { return WriteRemaining() > 0; }
bool PutStream::isOutputStreamInError() const { return WriteRemaining() < 1; }
bool PutStream::isOutputStreamAtEnd() const { return WriteRemaining() < 1; }

void PutStream::putCSlow(char c) {
  // Full: a stream that delivers its text makes room; a memory buffer stays
  // full and drops or raises.
  FlushOutputStream();
  if (WriteRemaining() > 0) {
    *pHead() = c;
    WriteAdvance(1);
    *pHead() = '\0';
    return;
  }
  if (silentTruncation)
    return;
  throwPutOverflow();
}

int PutStream::write(const char *data, int n) {
  int stored = 0;
  while (stored < n) {
    int room = capacity - writePos;
    if (room <= 0) {
      FlushOutputStream();
      room = capacity - writePos;
      if (room <= 0) {
        if (silentTruncation)
          return stored;
        throwPutOverflow();
      }
    }
    int chunk = std::min(room, n - stored);
    std::memcpy(pData + writePos, data + stored, static_cast<size_t>(chunk));
    writePos += chunk;
    pData[writePos] = '\0';
    stored += chunk;
  }
  return stored;
}

void PutStream::PutB(const char *data, int n) {
  if (data && n > 0)
    write(data, n);
}

void PutStream::Indent(int n) {
  // Padding comes from a static run of spaces, a chunk at a time.
  while (n > 0) {
    int chunk = std::min<int>(n, sizeof kSpaces - 1);
    write(kSpaces, chunk);
    n -= chunk;
  }
}

void PutStream::PutNChar(int n, char c) {
  if (c == ' ') {
    Indent(n);
    return;
  }
  for (int i = 0; i < n; ++i)
    PutC(c);
}

void PutStream::PutS(const char *text) {
  if (text)
    write(text, static_cast<int>(std::strlen(text)));
}

void PutStream::PutF(const char *fmt, ...) {
  if (!fmt)
    return;
  // Format straight into the free space when it fits (the storage has one
  // byte beyond the capacity for the NUL). Otherwise format into scratch and
  // let write() flush, truncate or raise exactly as for PutS.
  int room = pData ? capacity - writePos : 0;
  va_list args;
  va_start(args, fmt);
  va_list again;
  va_copy(again, args);
  int n = pData ? std::vsnprintf(pData + writePos,
                                 static_cast<size_t>(room) + 1, fmt, args)
                : std::vsnprintf(nullptr, 0, fmt, args);
  va_end(args);
  if (n >= 0 && n <= room) {
    writePos += n;
    va_end(again);
    return;
  }
  if (pData)
    pData[writePos] = '\0';
  if (n < 0) {
    va_end(again);
    return;
  }
  char local[1024];
  std::vector<char> big;
  char *scratch = local;
  if (static_cast<size_t>(n) >= sizeof local) {
    big.resize(static_cast<size_t>(n) + 1);
    scratch = big.data();
  }
  std::vsnprintf(scratch, static_cast<size_t>(n) + 1, fmt, again);
  va_end(again);
  write(scratch, n);
}

// --- GetStream ------------------------------------------------------------

GetStream::GetStream() = default;
GetStream::~GetStream() = default;

bool GetStream::StartInputStream() {
  readPos = 0;
  return true;
}

void GetStream::EndInputStream() {}

int GetStream::ReceiveInputStream(char *data, unsigned n) {
  int count = static_cast<int>(
      std::min<unsigned>(n, static_cast<unsigned>(std::max(ReadAvailable(), 0))));
  if (count > 0) {
    std::memcpy(data, pTail(), static_cast<size_t>(count));
    ReadAdvance(count);
  }
  return count;
}

bool GetStream::isInputStreamOpen() const { return ReadAvailable() > 0; }
bool GetStream::isInputStreamInError() const { return false; }
bool GetStream::isInputStreamAtEnd() const { return ReadAvailable() < 1; }

char GetStream::operator[](unsigned i) {
  return i < static_cast<unsigned>(std::max(ReadAvailable(), 0)) ? pTail()[i]
                                                                 : '\0';
}

// --- BufferStream ---------------------------------------------------------

BufferStream::BufferStream(int size) {
  capacity = size < 0 ? 0 : size;
  allocBuffer();
}

BufferStream::~BufferStream() = default;

} // namespace utility
