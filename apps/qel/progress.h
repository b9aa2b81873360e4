// Progress of a long print on stderr: after about a second, one line that
// counts the seconds and says what qel is doing, rewritten in place and
// erased at the end. Only when stderr is a terminal; otherwise nothing, so
// logs and pipes see only the real diagnostics.
#ifndef QEL_APPS_PROGRESS_H
#define QEL_APPS_PROGRESS_H

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class Progress {
public:
  /// Starts timing \p what (e.g. "show volumes"), in the building phase.
  explicit Progress(std::string what);
  /// Erases the line if one was shown.
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  /// Switches to the printing phase.
  void printing() { printing_.store(true, std::memory_order_relaxed); }

private:
  void run();

  std::string what_;
  std::atomic<bool> printing_{false};
  bool done_ = false; ///< guarded by mutex_
  std::mutex mutex_;
  std::condition_variable wake_;
  std::thread thread_; ///< runs only when stderr is a terminal
};

#endif
