#include "tools/epgcache/progress.h"

#include <unistd.h>

#include <cstdio>

namespace epgcache {

namespace {

constexpr auto kMoment = std::chrono::milliseconds(500);
constexpr auto kBetween = std::chrono::milliseconds(100);
constexpr const char* kBackAndClear = "\r\033[K";

}  // namespace

Progress::Progress(bool wanted)
    : on_terminal_(wanted && isatty(STDERR_FILENO) == 1), next_(Clock::now() + kMoment) {}

void Progress::Show(const std::string& name, std::uint64_t read, std::uint64_t whole) {
  if (!on_terminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kBetween;
  shown_ = true;
  constexpr std::uint64_t kMega = 1'000'000;
  // A line wider than the terminal could not be erased.
  constexpr std::size_t kMost = 40;
  const std::string end = name.size() > kMost ? "..." + name.substr(name.size() - kMost) : name;
  std::string line = kBackAndClear + ("Reading " + end) + ": ";
  if (whole != 0) {
    line += std::to_string(read * 100 / whole) + " % of " + std::to_string(whole / kMega) + " MB";
  } else {
    line += std::to_string(read / kMega) + " MB";
  }
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Progress::Clear() {
  if (!shown_) return;
  std::fputs(kBackAndClear, stderr);
  shown_ = false;
}

}  // namespace epgcache
