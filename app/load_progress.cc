#include "app/load_progress.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "app/display_text.h"
#include "app/system.h"

namespace shell {

LoadProgress::LoadProgress(const std::string& file) {
  if (!ErrorsAreShown()) return;
  std::error_code error;
  const auto bytes = std::filesystem::file_size(file, error);
  text_ = "reading " + Shown(file);
  if (!error) text_ += " (" + std::to_string(bytes / 1'000'000) + " MB)";
  thread_ = std::thread([this] { Show(); });
}

LoadProgress::~LoadProgress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    done_ = true;
  }
  changed_.notify_all();
  thread_.join();
  // Blanks, which every terminal takes.
  const std::string blank(static_cast<std::size_t>(shown_columns_), ' ');
  if (shown_columns_ != 0) std::fprintf(stderr, "\r%s\r", blank.c_str());
}

void LoadProgress::Show() {
  using Clock = std::chrono::steady_clock;
  const auto began = Clock::now();
  std::unique_lock lock(mutex_);
  auto wait = std::chrono::milliseconds(500);
  while (!changed_.wait_for(lock, wait, [this] { return done_; })) {
    const auto seconds = std::chrono::duration<double>(Clock::now() - began).count();
    char time[32];
    std::snprintf(time, sizeof time, ", %.1f s", seconds);
    const std::string line = text_ + time;
    std::fprintf(stderr, "\r%s", line.c_str());
    shown_columns_ = std::max(shown_columns_, ColumnsOf(line));
    wait = std::chrono::milliseconds(100);
  }
}

}  // namespace shell
