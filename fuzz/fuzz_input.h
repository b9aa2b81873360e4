// What the fuzzers share: reading operands from the input bytes, and
// failing a check so that libFuzzer keeps the input.
#ifndef QEL_FUZZ_FUZZ_INPUT_H
#define QEL_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

struct FuzzInput {
  const std::uint8_t *data;
  std::size_t size;

  bool empty() const { return size == 0; }
  /// The next byte; 0 once the input is used up.
  std::uint8_t byte() {
    if (!size)
      return 0;
    --size;
    return *data++;
  }
  std::uint32_t word() {
    std::uint32_t w = 0;
    for (int i = 0; i < 4; ++i)
      w = w << 8 | byte();
    return w;
  }
  /// A text of up to \p max bytes (its length is the next byte, scaled);
  /// NUL bytes are kept only when \p withNul.
  std::string text(int max, bool withNul) {
    std::string s;
    for (int n = byte() * max / 255; n && size; --n) {
      const char c = static_cast<char>(byte());
      if (c || withNul)
        s += c;
    }
    return s;
  }
};

/// Reports a broken invariant and aborts, so that libFuzzer saves the input.
[[noreturn]] inline void fuzzFail(const char *fuzzer, const char *what) {
  std::fprintf(stderr, "%s: %s\n", fuzzer, what);
  std::abort();
}

#endif
