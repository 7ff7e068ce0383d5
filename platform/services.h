// The operating-system services that the plug-in uses, with the names, results and error codes that
// their Windows originals have. One source file implements them for each family of systems.
//
// Units: a FileTime counts ticks of 100 ns since 1601-01-01 00:00, in UTC or local time.
// Threads: any, at the same time.
// Errors: a conversion that fails answers false and sets the calling thread's last error.
#pragma once

#include <cstdint>

namespace platform {

using FileTime = std::int64_t;
inline constexpr FileTime kTicksPerSecond = 10'000'000;
inline constexpr FileTime kTicksPerMinute = 600'000'000;
inline constexpr FileTime kTicksPerDay = 1440 * kTicksPerMinute;

inline constexpr int kErrorInvalidParameter = 87;

// A date and time of the Gregorian calendar.
struct SystemTime {
  int year;
  int month;        // from 1
  int day_of_week;  // 0 is Sunday; not looked at where a time is converted from
  int day;          // from 1
  int hour;
  int minute;
  int second;
  int milliseconds;
};

FileTime GetSystemTimeAsFileTime();

// Applies the offset from UTC that is in force now, not the one of `utc`.
[[nodiscard]] bool FileTimeToLocalFileTime(FileTime utc, FileTime& local);

// Fails with kErrorInvalidParameter for a negative time.
[[nodiscard]] bool FileTimeToSystemTime(FileTime time, SystemTime& broken_down);

// Fails with kErrorInvalidParameter for a date or time that does not exist, or one before 1601 or
// after 30827.
[[nodiscard]] bool SystemTimeToFileTime(const SystemTime& broken_down, FileTime& time);

SystemTime GetLocalTime();

int GetLastError();

// Milliseconds since some fixed moment; wraps after 49.7 days.
std::uint32_t GetTickCount();

// One UTF-16 code unit in the system's 8-bit code page: `default_character`, and true in
// `used_default`, when the page does not have it.
char WideCharToMultiByte(char16_t unit, char default_character, bool& used_default);

// Shows a text under a caption and waits for the user. POSIX: writes both to standard error, in one
// write, and does not wait.
inline constexpr unsigned kMessageBoxInformation = 0x40;
void MessageBoxA(const char* text, const char* caption, unsigned style);

// What stands in for the system while a test runs; a null entry leaves the system's own.
struct Overrides {
  FileTime (*clock)() = nullptr;
  // The local time's offset from UTC, in minutes, east positive.
  int (*zone_minutes)() = nullptr;
  std::uint32_t (*tick_count)() = nullptr;
  void (*message_box)(const char* text, const char* caption, unsigned style) = nullptr;
};
extern Overrides overrides;

}  // namespace platform
