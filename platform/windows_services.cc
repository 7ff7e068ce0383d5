// Every service is the system's own.
#include "platform/services.h"

#include <windows.h>

namespace platform {

constinit Overrides overrides = {};

namespace {

FileTime FromSystem(const FILETIME& time) {
  const std::uint64_t high = time.dwHighDateTime;
  return static_cast<FileTime>(high << 32 | time.dwLowDateTime);
}

FILETIME ToSystem(FileTime time) {
  const auto bits = static_cast<std::uint64_t>(time);
  return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

SystemTime FromSystem(const SYSTEMTIME& time) {
  return {time.wYear, time.wMonth,  time.wDayOfWeek, time.wDay,
          time.wHour, time.wMinute, time.wSecond,    time.wMilliseconds};
}

// False when a field is not within the 16 bits that the system takes.
bool ToSystem(const SystemTime& time, SYSTEMTIME& result) {
  const int fields[] = {time.year,   time.month,  time.day,         time.hour,
                        time.minute, time.second, time.milliseconds};
  for (const int field : fields) {
    if (field < 0 || field > 0xffff) return false;
  }
  const auto word = [](int field) { return static_cast<WORD>(field); };
  result = {word(time.year),   word(time.month),       0,
            word(time.day),    word(time.hour),        word(time.minute),
            word(time.second), word(time.milliseconds)};
  return true;
}

}  // namespace

FileTime GetSystemTimeAsFileTime() {
  if (overrides.clock != nullptr) return overrides.clock();
  FILETIME now = {};
  ::GetSystemTimeAsFileTime(&now);
  return FromSystem(now);
}

bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) {
  if (overrides.zone_minutes != nullptr) {
    local = utc + overrides.zone_minutes() * kTicksPerMinute;
    return true;
  }
  const FILETIME time = ToSystem(utc);
  FILETIME result = {};
  if (::FileTimeToLocalFileTime(&time, &result) == 0) return false;
  local = FromSystem(result);
  return true;
}

bool FileTimeToSystemTime(FileTime time, SystemTime& broken_down) {
  const FILETIME ticks = ToSystem(time);
  SYSTEMTIME result = {};
  if (::FileTimeToSystemTime(&ticks, &result) == 0) return false;
  broken_down = FromSystem(result);
  return true;
}

bool SystemTimeToFileTime(const SystemTime& broken_down, FileTime& time) {
  SYSTEMTIME fields = {};
  FILETIME result = {};
  if (!ToSystem(broken_down, fields)) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return false;
  }
  if (::SystemTimeToFileTime(&fields, &result) == 0) return false;
  time = FromSystem(result);
  return true;
}

SystemTime GetLocalTime() {
  if (overrides.clock == nullptr && overrides.zone_minutes == nullptr) {
    SYSTEMTIME now = {};
    ::GetLocalTime(&now);
    return FromSystem(now);
  }
  FileTime local = 0;
  SystemTime broken_down = {};
  if (!FileTimeToLocalFileTime(GetSystemTimeAsFileTime(), local) ||
      !FileTimeToSystemTime(local, broken_down)) {
    return {};
  }
  return broken_down;
}

int GetLastError() { return static_cast<int>(::GetLastError()); }

std::uint32_t GetTickCount() {
  return overrides.tick_count != nullptr ? overrides.tick_count() : ::GetTickCount();
}

char WideCharToMultiByte(char16_t unit, char default_character, bool& used_default) {
  const wchar_t character = unit;
  char bytes[8] = {};  // of which the first is taken
  BOOL lacking = FALSE;
  // A page that has every character takes neither.
  const bool has_all = ::GetACP() == CP_UTF8;
  const int count = ::WideCharToMultiByte(
      CP_ACP, has_all ? 0 : WC_NO_BEST_FIT_CHARS, &character, 1, bytes, sizeof bytes,
      has_all ? nullptr : &default_character, has_all ? nullptr : &lacking);
  used_default = lacking != FALSE || count == 0;
  return used_default ? default_character : bytes[0];
}

void MessageBoxA(const char* text, const char* caption, unsigned style) {
  if (overrides.message_box != nullptr) {
    overrides.message_box(text, caption, style);
  } else {
    ::MessageBoxA(nullptr, text, caption, style);
  }
}

}  // namespace platform
