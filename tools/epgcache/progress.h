// A progress line, shown on a terminal for inputs that take longer than a moment.
//
// Threads: one at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace epgcache {

class Progress {
 public:
  // `wanted` false shows nothing.
  explicit Progress(bool wanted);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Clear(); }

  // Bytes read of an input, and how many it has (0: unknown).
  void Show(const std::string& name, std::uint64_t read, std::uint64_t whole);
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool on_terminal_;
  bool shown_ = false;
  Clock::time_point next_;
};

}  // namespace epgcache
