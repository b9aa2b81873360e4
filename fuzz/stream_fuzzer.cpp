// Stream operation sequences against a model of the buffer: the text written
// so far (head = its length) and the read position. Every operation's
// result, its exception and the positions afterwards must match the model,
// with and without silent truncation; ASan sees any byte touched outside
// the storage.
//
// Input: byte 0 is the capacity (0..255); then operations, each an opcode
// byte and its operands taken from the bytes that follow.
#include "fuzz_input.h"

#include <qel/qel.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

// Counts: mostly small, with the edges that overflow naive arithmetic.
int count(FuzzInput &in) {
  switch (std::uint8_t b = in.byte(); b >> 5) {
  case 0:
    return INT_MAX - (b & 3);
  case 1:
    return INT_MIN + (b & 3);
  case 2:
    return -static_cast<int>(b & 31);
  default:
    return b - 96;
  }
}

[[noreturn]] void fail(const char *what) { fuzzFail("stream_fuzzer", what); }

void check(bool ok, const char *what) {
  if (!ok)
    fail(what);
}

// The model of one BufferStream.
struct Model {
  std::string text; // bytes 0..head
  long read = 0;
  long capacity = 0;
  bool silent = false;

  long room() const { return capacity - static_cast<long>(text.size()); }
  // A write of \p bytes: what fits is kept; true when it all fit.
  bool write(const std::string &bytes) {
    const long fits = std::min<long>(room(), static_cast<long>(bytes.size()));
    text.append(bytes, 0, static_cast<std::size_t>(fits));
    return fits == static_cast<long>(bytes.size());
  }
};

// Runs \p op; it must raise the overflow exception exactly when \p raises.
template <typename F> void expectRaise(F op, bool raises) {
  try {
    op();
  } catch (framework::Exception *e) {
    std::unique_ptr<framework::Exception> owned(e);
    check(raises, "unexpected exception");
    check(e->code() == 1239, "exception code");
    return;
  }
  check(!raises, "missing exception");
}

void compare(utility::BufferStream &s, const Model &m) {
  const long head = static_cast<long>(m.text.size());
  check(s.WritePosition() == head, "write position");
  check(s.ReadAvailable() == head - m.read, "read position");
  check(s.WriteRemaining() == m.capacity - head, "remaining");
  check(0 <= m.read && m.read <= head && head <= m.capacity, "model invariant");
  const char *tail = s.pTail();
  check(std::memcmp(tail, m.text.data() + m.read, static_cast<std::size_t>(head - m.read)) == 0,
        "unread text");
  check(tail[head - m.read] == '\0', "terminator");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  FuzzInput in{data, size};
  Model m;
  m.capacity = in.byte();
  utility::BufferStream s(static_cast<int>(m.capacity));
  check(s.Capacity() == m.capacity, "allocation");
  while (!in.empty()) {
    const std::uint8_t op = in.byte();
    switch (op % 14) {
    case 0: {
      const char c = static_cast<char>(in.byte());
      const bool fits = m.write(std::string(1, c));
      expectRaise([&] { s.PutC(c); }, !fits && !m.silent);
      break;
    }
    case 1: {
      std::string t = in.text(80, true);
      t = t.substr(0, t.find('\0'));
      const bool fits = m.write(t);
      expectRaise([&] { s.PutS(t.c_str()); }, !fits && !m.silent);
      break;
    }
    case 2: {
      const std::string t = in.text(80, true);
      const bool fits = m.write(t);
      expectRaise([&] { s.PutB(t.data(), static_cast<int>(t.size())); }, !fits && !m.silent);
      break;
    }
    case 3: {
      std::string t = in.text(80, true);
      t = t.substr(0, t.find('\0'));
      const int n = count(in);
      char number[16];
      std::snprintf(number, sizeof number, "%d", n);
      const bool fits = m.write(t + number);
      expectRaise([&] { s.PutF("%s%d", t.c_str(), n); }, !fits && !m.silent);
      break;
    }
    case 4:
    case 5: {
      const int n = count(in) % 400;
      const char c = op % 14 == 4 ? static_cast<char>(in.byte()) : ' ';
      const bool fits = m.write(std::string(n > 0 ? static_cast<std::size_t>(n) : 0, c));
      if (op % 14 == 4)
        expectRaise([&] { s.PutNChar(n, c); }, !fits && !m.silent);
      else
        expectRaise([&] { s.Indent(n); }, !fits && !m.silent);
      break;
    }
    case 6: {
      // The caller writes into the free space, then moves the head.
      const int n = count(in);
      const long room = m.room();
      if (room > 0)
        std::memset(s.pHead(), 'w', static_cast<std::size_t>(room));
      const long head = static_cast<long>(m.text.size());
      const long to = std::min<long>(std::max<long>(head + n, m.read), m.capacity);
      if (to >= head)
        m.text.append(static_cast<std::size_t>(to - head), 'w');
      else
        m.text.resize(static_cast<std::size_t>(to));
      expectRaise([&] { s.WriteAdvance(n); }, (n < 0 || n > room) && !m.silent);
      break;
    }
    case 7: {
      const int n = count(in);
      const long head = static_cast<long>(m.text.size());
      const bool inRange = n >= 0 && n <= head - m.read;
      m.read = std::min<long>(std::max<long>(m.read + n, 0), head);
      expectRaise([&] { s.ReadAdvance(n); }, !inRange && !m.silent);
      break;
    }
    case 8: {
      char block[300];
      const unsigned want = in.byte();
      const long head = static_cast<long>(m.text.size());
      const long got = std::min<long>(want, head - m.read);
      check(s.ReceiveInputStream(block, want) == got, "receive count");
      check(std::memcmp(block, m.text.data() + m.read, static_cast<std::size_t>(got)) == 0,
            "received bytes");
      m.read += got;
      break;
    }
    case 9: {
      const unsigned i = in.byte();
      const long available = static_cast<long>(m.text.size()) - m.read;
      const char expected = i < available ? m.text[static_cast<std::size_t>(m.read + i)] : '\0';
      check(s[i] == expected, "indexed byte");
      break;
    }
    case 10:
      s.Rewind();
      m.text.clear();
      m.read = 0;
      break;
    case 11:
      s.StartInputStream();
      m.read = 0;
      break;
    case 12:
      m.silent = !m.silent;
      s.setSilentTruncation(m.silent);
      break;
    case 13: {
      const std::string t = in.text(80, true);
      const bool fits = m.write(t);
      bool sent = false;
      expectRaise([&] { sent = s.SendOutputStream(t.data(), static_cast<unsigned>(t.size())); },
                  !fits && !m.silent);
      if (fits || m.silent)
        check(sent == fits, "send result");
      break;
    }
    }
    compare(s, m);
  }
  return 0;
}
