#include "host/mlog.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <system_error>
#include <utility>

#include "host/mstr.h"

namespace ORVANE {

namespace {

// Of this thread; null where entries are passed on at once.
thread_local MLOG::BACKGROUND* background = nullptr;

// Few entries are not worth a thread.
constexpr int kEntriesAtOnce = 64;
// The writer is not woken for each entry, which would cost as much as passing it on, but for so
// many bytes, or by the time.
constexpr std::size_t kWorthWaking = std::size_t{16} << 10;
constexpr std::chrono::milliseconds kLongestWait(5);
// As many bytes may wait; then whoever logs waits for the sink.
constexpr std::size_t kMostWaiting = std::size_t{256} << 10;

struct ENTRY {
  MLOG::TYPE type;
  std::uint32_t length;
};

}  // namespace

MLOG MLog;

MLOG::MLOG() = default;
MLOG::~MLOG() = default;

void MLOG::SetSink(SINK sink) {
  const std::lock_guard lock(mutex_);
  sink_ = std::move(sink);
}

void MLOG::Pass(TYPE type, std::string_view text) {
  const std::lock_guard lock(mutex_);
  if (sink_) sink_(type, text);
}

void MLOG::Write(TYPE type, const char* format, std::va_list arguments) {
  try {
    char small[256];
    MSTR large;
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(small, sizeof small, format, measured);
    va_end(measured);
    const auto size = static_cast<std::size_t>(length);
    if (length < 0 || size >= sizeof small) large.FormatList(format, arguments);
    const std::string_view text = large.IsEmpty() ? std::string_view(small, size) : large.View();
    if (background == nullptr || !background->Take(type, text)) Pass(type, text);
  } catch (const std::bad_alloc&) {  // a lost entry must not break what it was about
  }
}

void MLOG::Log(TYPE type, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(type, format, arguments);
  va_end(arguments);
}

void MLOG::Log(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(UNTYPED, format, arguments);
  va_end(arguments);
}

MLOG::BACKGROUND::BACKGROUND() { background = this; }

MLOG::BACKGROUND::~BACKGROUND() {
  background = nullptr;
  if (!writer_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
  writer_.join();
}

bool MLOG::BACKGROUND::Take(TYPE type, std::string_view text) {
  if (!writer_.joinable()) {
    if (++entries_ <= kEntriesAtOnce) return false;
    try {
      writer_ = std::thread(&BACKGROUND::PassOn, this);
    } catch (const std::system_error&) {  // then it goes on as before
      entries_ = 0;
      return false;
    }
  }
  const ENTRY entry = {type, static_cast<std::uint32_t>(text.size())};
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return waiting_.size() < kMostWaiting; });
  const std::size_t begin = waiting_.size();
  waiting_.resize(begin + sizeof entry + text.size());
  std::memcpy(&waiting_[begin], &entry, sizeof entry);
  text.copy(&waiting_[begin + sizeof entry], text.size());
  const bool wake = begin < kWorthWaking && waiting_.size() >= kWorthWaking;
  lock.unlock();
  if (wake) changed_.notify_all();
  return true;
}

void MLOG::BACKGROUND::PassOn() {
  std::string taken;
  for (;;) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait_for(lock, kLongestWait,
                        [this] { return ended_ || waiting_.size() >= kWorthWaking; });
      if (ended_ && waiting_.empty()) return;
      if (waiting_.size() >= kMostWaiting) changed_.notify_all();
      taken.clear();
      taken.swap(waiting_);
    }
    for (std::string_view rest = taken; !rest.empty();) {
      ENTRY entry = {};
      std::memcpy(&entry, rest.data(), sizeof entry);
      try {
        MLog.Pass(entry.type, rest.substr(sizeof entry, entry.length));
      } catch (const std::exception&) {  // nobody is left to tell; the next entry may do better
      }
      rest.remove_prefix(sizeof entry + entry.length);
    }
  }
}

}  // namespace ORVANE
