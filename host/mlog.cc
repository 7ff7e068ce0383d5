#include "host/mlog.h"

#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "host/internal/background_log.h"
#include "host/internal/texts.h"

namespace ORVANE {

namespace {

// Of this thread; null where entries are passed on at once.
thread_local BACKGROUNDLOG* background = nullptr;

// Few entries are not worth a thread.
constexpr int kEntriesAtOnce = 64;
// The writer is not woken for each entry, which would cost as much as passing it on, but for so
// many bytes, or by the time.
constexpr std::size_t kWorthWaking = std::size_t{16} << 10;
constexpr std::chrono::milliseconds kLongestWait(5);
// At most so many bytes may wait; beyond that, logging waits for the sink.
constexpr std::size_t kMostWaiting = std::size_t{256} << 10;

struct HEADER {
  ENTRY entry;
  std::uint32_t length;
};

std::mutex sink_mutex;  // guards the sink
SINK sink;

void Pass(ENTRY entry, std::string_view text) {
  const std::lock_guard lock(sink_mutex);
  if (sink) sink(entry, text);
}

void Write(ENTRY entry, std::string_view text) {
  if (background == nullptr || !background->Defer(entry, text)) Pass(entry, text);
}

void Write(ENTRY entry, const char* format, std::va_list arguments) ORVANE_PRINTF(2, 0);
void Write(ENTRY entry, const char* format, std::va_list arguments) {
  try {
    char small[256];
    MSTR large;
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(small, sizeof small, format, measured);
    va_end(measured);
    const auto size = static_cast<std::size_t>(length);
    if (length < 0 || size >= sizeof small) TEXTS::Format(large, format, arguments);
    Write(entry, large.length == 0 ? std::string_view(small, size) : TEXTS::View(large));
  } catch (const std::bad_alloc&) {  // a lost entry must not break what it was about
  }
}

}  // namespace

MLOG MLog;

void SetLogSink(SINK replacement) {
  const std::lock_guard lock(sink_mutex);
  sink = std::move(replacement);
}

void MLOG::Log(TYPE type, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(static_cast<ENTRY>(type), format, arguments);
  va_end(arguments);
}

void MLOG::Log(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(ENTRY::Untyped, format, arguments);
  va_end(arguments);
}

void LogCaller(std::string_view place) {
  try {
    Write(ENTRY::Caller, place);
  } catch (const std::bad_alloc&) {
  }
}

BACKGROUNDLOG::BACKGROUNDLOG() { background = this; }

BACKGROUNDLOG::~BACKGROUNDLOG() {
  background = nullptr;
  if (!writer_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
  writer_.join();
}

bool BACKGROUNDLOG::Defer(ENTRY entry, std::string_view text) {
  if (!writer_.joinable()) {
    if (++entries_ <= kEntriesAtOnce) return false;
    try {
      writer_ = std::thread(&BACKGROUNDLOG::PassOn, this);
    } catch (const std::system_error&) {  // then it goes on as before
      entries_ = 0;
      return false;
    }
  }
  const HEADER header = {entry, static_cast<std::uint32_t>(text.size())};
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return waiting_.size() < kMostWaiting; });
  const std::size_t begin = waiting_.size();
  waiting_.resize(begin + sizeof header + text.size());
  std::memcpy(&waiting_[begin], &header, sizeof header);
  text.copy(&waiting_[begin + sizeof header], text.size());
  const bool wake = begin < kWorthWaking && waiting_.size() >= kWorthWaking;
  lock.unlock();
  if (wake) changed_.notify_all();
  return true;
}

void BACKGROUNDLOG::PassOn() {
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
      HEADER header = {};
      std::memcpy(&header, rest.data(), sizeof header);
      try {
        Pass(header.entry, rest.substr(sizeof header, header.length));
      } catch (const std::exception&) {  // it cannot be reported; go on with the next entry
      }
      rest.remove_prefix(sizeof header + header.length);
    }
  }
}

}  // namespace ORVANE
