// Output and input streams of the utility framework.
//
// All text of the library goes through a utility::PutStream. The storage is a
// utility::Buffer: `capacity` text bytes plus one byte for a NUL, with a write
// position (head) and a read position (tail):
//
//     pData: [ consumed | unread text | free ........ ]\0
//                       ^readPos      ^writePos       ^capacity
//
// Invariants: 0 <= readPos <= writePos <= capacity, and after every write the
// byte at writePos is NUL, so pTail() is always a NUL-terminated string.
//
// A full buffer either drops what does not fit (silent truncation) or throws
// a framework::Exception* with code 1239. Before either, a write into a full
// buffer asks the stream to FlushOutputStream(): memory buffers do nothing
// there, while a utility::FileStream writes its text out and so never fills.
#ifndef QEL_PLATFORM_STREAMS_H
#define QEL_PLATFORM_STREAMS_H

#include <qel/platform/export.h>

namespace framework {
class InputStream;
}

namespace utility {

class PutStream;

/// Storage shared by the put and get sides of a stream.
class QEL_API Buffer {
public:
  Buffer();
  virtual ~Buffer();
  Buffer(const Buffer &) = delete;
  Buffer &operator=(const Buffer &) = delete;

  /// capacity - writePos.
  virtual int WriteRemaining() const;
  /// writePos - readPos.
  virtual int ReadAvailable() const;
  /// Moves the head by \p n and terminates the text there. Past the
  /// capacity (or n < 0) the head is clamped to [readPos, capacity], and
  /// then, unless truncation is silent, code 1239 is thrown.
  virtual void WriteAdvance(int n);
  /// Moves the tail by \p n. Past the head (or n < 0) the tail is clamped
  /// to [0, writePos], and then, unless truncation is silent, code 1239 is
  /// thrown.
  virtual void ReadAdvance(int n);

  char *pHead() const;      ///< where the next byte is written
  char *pTail() const;      ///< the unread text, NUL-terminated
  int WritePosition() const { return writePos; }
  int Capacity() const { return capacity; }
  /// Empties the buffer: both positions 0, first byte NUL.
  void Rewind();
  void setSilentTruncation(bool on) { silentTruncation = on; }
  bool isSilentTruncation() const { return silentTruncation; }

  /// Allocates capacity + 1 bytes from framework::Memory (releasing earlier
  /// storage). On failure the buffer has no storage and capacity 0, so every
  /// write is dropped or raises, and pTail() is "".
  void allocBuffer();

protected:
  int capacity;          ///< text bytes the storage holds (plus one NUL)
  char *pData;           ///< storage, or null before allocBuffer()
  int writePos;          ///< head: next byte written here
  int readPos;           ///< tail: unread text starts here
  bool silentTruncation; ///< drop instead of throwing when full
};

/// Throws the overflow exception of PutC (code 1239).
[[noreturn]] QEL_API void throwPutOverflow();

} // namespace utility

namespace framework {

/// Abstract destination of bytes.
class QEL_API OutputStream {
public:
  virtual ~OutputStream();
  virtual bool StartOutputStream() = 0;
  virtual void EndOutputStream() = 0;
  /// Writes \p n bytes; true when all of them were taken.
  virtual bool SendOutputStream(const char *data, unsigned n) = 0;
  /// Delivers buffered output; does nothing by default.
  virtual bool FlushOutputStream();
  /// Copies \p in to this stream through a 16384-byte block. False when a
  /// read or a send fails, or the input ends in error or not at its end.
  virtual bool TransferFromInputStream(InputStream &in);
  virtual bool isOutputStreamOpen() const = 0;
  virtual bool isOutputStreamInError() const = 0;
  virtual bool isOutputStreamAtEnd() const = 0;
  /// Open, and neither in error nor at end.
  virtual bool isOutputStreamGood() const;
};

/// Abstract source of bytes.
class QEL_API InputStream {
public:
  enum InputMode { INPUT_TEXT, INPUT_BINARY };

  virtual ~InputStream();
  virtual bool StartInputStream() = 0;
  virtual void EndInputStream() = 0;
  /// Reads up to \p n bytes into \p data; the count read, or -1 on error.
  virtual int ReceiveInputStream(char *data, unsigned n) = 0;
  virtual bool isInputStreamOpen() const = 0;
  virtual bool isInputStreamInError() const = 0;
  virtual bool isInputStreamAtEnd() const = 0;
  /// Open, and neither in error nor at end.
  virtual bool isInputStreamGood() const;
  /// -1: the size is unknown.
  virtual int GetInputStreamSize() const;
  /// Does nothing by default.
  virtual void setInputMode(InputMode mode);
};

} // namespace framework

namespace utility {

/// Output decoration hooks of the framework; the library never uses them.
class QEL_API Decorator {
public:
  enum DecorationType { DECORATION_NONE, DECORATION_LINE, DECORATION_PAGE };

  virtual ~Decorator();
  virtual void setDecoration(DecorationType type);
  virtual void setDecoration(DecorationType type, PutStream *stream);

protected:
  DecorationType decoration = DECORATION_NONE;
  PutStream *decorationStream = nullptr;
};

/// The put side: appends text at the head of the buffer.
class QEL_API PutStream : public framework::OutputStream,
                          public Decorator,
                          public virtual Buffer {
public:
  PutStream();
  ~PutStream() override;

  bool StartOutputStream() override; ///< Rewind(); true
  void EndOutputStream() override;   ///< nothing
  bool SendOutputStream(const char *data, unsigned n) override;
  bool isOutputStreamOpen() const override;    ///< WriteRemaining() > 0
  bool isOutputStreamInError() const override; ///< WriteRemaining() < 1
  bool isOutputStreamAtEnd() const override;   ///< WriteRemaining() < 1

  /// Writes \p n bytes (n <= 0: nothing).
  virtual void PutB(const char *data, int n);
  /// Writes \p n spaces (n <= 0: nothing).
  virtual void Indent(int n);

  /// Writes one character; see the file comment for a full buffer.
  void PutC(char c) {
    if (writePos < capacity) {
      pData[writePos] = c;
      pData[++writePos] = '\0';
      return;
    }
    putCSlow(c);
  }
  /// Writes \p c \p n times (n <= 0: nothing).
  void PutNChar(int n, char c);
  /// Writes a NUL-terminated text (null: nothing).
  void PutS(const char *text);
  /// Writes printf-formatted text.
  void PutF(const char *fmt, ...) QEL_PRINTF(2, 3);

private:
  void putCSlow(char c);
  // Writes \p n bytes; returns how many were stored before the rest was
  // dropped (silent truncation). Throws when full without truncation.
  int write(const char *data, int n);
};

/// The get side: reads the unread text at the tail of the buffer.
class QEL_API GetStream : public framework::InputStream,
                          public virtual Buffer {
public:
  GetStream();
  ~GetStream() override;

  bool StartInputStream() override; ///< readPos = 0; true
  void EndInputStream() override;   ///< nothing
  /// Copies up to \p n unread bytes and consumes them; the count copied.
  int ReceiveInputStream(char *data, unsigned n) override;
  bool isInputStreamOpen() const override;    ///< ReadAvailable() > 0
  bool isInputStreamInError() const override; ///< always false
  bool isInputStreamAtEnd() const override;   ///< ReadAvailable() < 1

  /// The unread byte at offset \p i from the tail, or NUL past the head.
  virtual char operator[](unsigned i);
};

/// A bounded in-memory stream: what the put side writes, the buffer and the
/// get side read back.
class QEL_API BufferStream : public PutStream, public GetStream {
public:
  /// A stream of \p size text bytes (negative: 0), storage from
  /// framework::Memory.
  explicit BufferStream(int size);
  ~BufferStream() override;
};

/// A put stream that delivers to a file descriptor. It never truncates: when
/// the buffer fills, its text is written out and writing continues. Output is
/// also written on FlushOutputStream() and on destruction. The descriptor is
/// not closed. Write errors are sticky: the first one stops delivery, later
/// text is discarded, and isOutputStreamInError() reports it.
class QEL_API FileStream : public PutStream {
public:
  FileStream(int fd, int capacity);
  ~FileStream() override;

  bool FlushOutputStream() override;
  bool isOutputStreamOpen() const override;
  bool isOutputStreamInError() const override;
  bool isOutputStreamAtEnd() const override;

private:
  int m_fd;
  bool m_failed = false;
};

} // namespace utility

#endif
