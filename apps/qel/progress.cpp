#include "progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {
// A print this short gets no progress line at all.
constexpr std::chrono::milliseconds kDelay{1000};
constexpr std::chrono::milliseconds kTick{250};

// QEL_PROGRESS_DELAY_MS shortens the delay so that tests can see the line
// without a print that takes a second on every machine.
std::chrono::milliseconds delay() {
  if (const char *text = std::getenv("QEL_PROGRESS_DELAY_MS")) {
    char *end = nullptr;
    const long ms = std::strtol(text, &end, 10);
    if (end != text && *end == '\0' && ms >= 0 && ms <= 60000)
      return std::chrono::milliseconds(ms);
  }
  return kDelay;
}
} // namespace

Progress::Progress(std::string what) : what_(std::move(what)) {
  if (isatty(STDERR_FILENO))
    thread_ = std::thread(&Progress::run, this);
}

Progress::~Progress() {
  if (!thread_.joinable())
    return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    done_ = true;
  }
  wake_.notify_one();
  thread_.join();
}

void Progress::run() {
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock<std::mutex> lock(mutex_);
  if (wake_.wait_for(lock, delay(), [this] { return done_; }))
    return;
  static const char kSpin[] = "|/-\\";
  for (unsigned tick = 0; !done_; ++tick) {
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    std::fprintf(stderr, "\rqel: %s: %s %c %llds", what_.c_str(),
                 printing_.load(std::memory_order_relaxed) ? "printing" : "building",
                 kSpin[tick % 4], static_cast<long long>(seconds.count()));
    std::fflush(stderr);
    wake_.wait_for(lock, kTick, [this] { return done_; });
  }
  // Erase the line so that the terminal shows only the output.
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
}
