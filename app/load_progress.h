// A line that says what is being read.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace shell {

// Shows on standard error, if that is a terminal, what is being read and for how long, until it is
// destroyed. Nothing is shown in the first half second.
class LoadProgress {
 public:
  explicit LoadProgress(const std::string& file);
  LoadProgress(const LoadProgress&) = delete;
  LoadProgress& operator=(const LoadProgress&) = delete;
  ~LoadProgress();

 private:
  void Show();

  std::string text_;
  std::thread thread_;
  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  bool done_ = false;
  int shown_columns_ = 0;
};

}  // namespace shell
