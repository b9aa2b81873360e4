#include "progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {
// A print this short gets no progress line at all.
constexpr std::chrono::milliseconds kDelay{1000};
constexpr std::chrono::milliseconds kTick{250};
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
  if (wake_.wait_for(lock, kDelay, [this] { return done_; }))
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
