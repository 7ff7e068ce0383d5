#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <new>
#include <optional>
#include <string>

#include "platform/calendar.h"
#include "platform/services.h"
#include "text/entry_text.h"
#include "text/windows_1252.h"

namespace platform {

constinit Overrides overrides = {};

namespace {

constinit thread_local int last_error = 0;

bool Fail(int error) {
  last_error = error;
  return false;
}

FileTime LocalOffset() {
  if (overrides.zone_minutes != nullptr) return overrides.zone_minutes() * kTicksPerMinute;
  const auto now =
      static_cast<std::time_t>((GetSystemTimeAsFileTime() - kUnixEpoch) / kTicksPerSecond);
  // Asking the system takes 2 us, and a screen full of programmes has hundreds of times.
  static constinit thread_local struct {
    bool valid = false;
    std::time_t second = 0;
    FileTime offset = 0;
  } known;
  if (!known.valid || known.second != now) {
    ::tzset();  // localtime_r alone need not notice a changed zone
    std::tm local = {};
    known.offset = ::localtime_r(&now, &local) != nullptr ? local.tm_gmtoff * kTicksPerSecond : 0;
    known.second = now;
    known.valid = true;
  }
  return known.offset;
}

}  // namespace

FileTime GetSystemTimeAsFileTime() {
  if (overrides.clock != nullptr) return overrides.clock();
  using Ticks = std::chrono::duration<FileTime, std::ratio<1, kTicksPerSecond>>;
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  return kUnixEpoch + std::chrono::duration_cast<Ticks>(since).count();
}

bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) {
  local = utc + LocalOffset();
  return true;
}

bool FileTimeToSystemTime(FileTime time, SystemTime& broken_down) {
  return FromFileTime(time, broken_down) || Fail(kErrorInvalidParameter);
}

bool SystemTimeToFileTime(const SystemTime& broken_down, FileTime& time) {
  return ToFileTime(broken_down, time) || Fail(kErrorInvalidParameter);
}

SystemTime GetLocalTime() {
  SystemTime now = {};
  // A clock before 1601 has no date.
  return FromFileTime(GetSystemTimeAsFileTime() + LocalOffset(), now) ? now : SystemTime{};
}

int GetLastError() { return last_error; }

std::uint32_t GetTickCount() {
  if (overrides.tick_count != nullptr) return overrides.tick_count();
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

char WideCharToMultiByte(char16_t unit, char default_character, bool& used_default) {
  const std::optional<char> byte = ToWindows1252(unit);
  used_default = !byte;
  return byte.value_or(default_character);
}

void MessageBoxA(const char* text, const char* caption, unsigned style) {
  if (overrides.message_box != nullptr) {
    overrides.message_box(text, caption, style);
    return;
  }
  try {
    const std::string entry = EntryText(BoxPrefix(caption), text, ::isatty(STDERR_FILENO) != 0);
    std::fwrite(entry.data(), 1, entry.size(), stderr);
  } catch (const std::bad_alloc&) {  // the box is lost; whoever shows it goes on
  }
}

}  // namespace platform
