#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <new>
#include <string>

#include "platform/calendar.h"
#include "platform/services.h"

namespace platform {

constinit Overrides overrides = {};

namespace {

constinit thread_local int last_error = 0;

constexpr FileTime kTicksPerSecond = 10'000'000;
constexpr FileTime kUnixEpoch = 134774 * kTicksPerDay;  // 1970-01-01

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
  if (time < 0) return Fail(kErrorInvalidParameter);
  broken_down = FromFileTime(time);
  return true;
}

bool SystemTimeToFileTime(const SystemTime& broken_down, FileTime& time) {
  return ToFileTime(broken_down, time) || Fail(kErrorInvalidParameter);
}

SystemTime GetLocalTime() { return FromFileTime(GetSystemTimeAsFileTime() + LocalOffset()); }

int GetLastError() { return last_error; }

std::uint32_t GetTickCount() {
  if (overrides.tick_count != nullptr) return overrides.tick_count();
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

char WideCharToMultiByte(char16_t unit, char default_character, bool& used_default) {
  // Windows-1252: what its codes 80 to 9F stand for. The five that it does not assign map to
  // themselves.
  static constexpr char16_t kUpper[] = {
      0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
      0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};
  used_default = false;
  if (unit < 0x80 || (unit >= 0xa0 && unit <= 0xff)) return static_cast<char>(unit);
  const auto* const found = std::find(std::begin(kUpper), std::end(kUpper), unit);
  if (found != std::end(kUpper)) return static_cast<char>(0x80 + (found - kUpper));
  used_default = true;
  return default_character;
}

void MessageBoxA(const char* text, const char* caption, unsigned style) {
  if (overrides.message_box != nullptr) {
    overrides.message_box(text, caption, style);
    return;
  }
  try {
    std::string shown = std::string("message box [") + caption + "]: ";
    for (const char* at = text; *at != '\0'; ++at) {
      shown += *at;
      if (*at == '\n') shown += "  ";
    }
    shown += '\n';
    std::fwrite(shown.data(), 1, shown.size(), stderr);
  } catch (const std::bad_alloc&) {  // the box is lost; whoever shows it goes on
  }
}

}  // namespace platform
