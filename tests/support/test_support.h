// What tests of several subjects share.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/mlog.h"
#include "host/mstr.h"

namespace epg_test {

// A file of its own folder below the system's temporary one, for as long as the object lives.
class TempFile {
 public:
  explicit TempFile(std::string_view content, const std::string& name = "listings.xml");
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  ~TempFile();

  void Write(std::string_view content) const;
  const std::string& Path() const { return path_; }
  ORVANE::MSTR Name() const { return path_.c_str(); }
  // Without its ".xml", as scripts name listings.
  std::string Stem() const { return path_.substr(0, path_.rfind('.')); }

 private:
  std::string folder_;
  std::string path_;
};

std::string ReadFile(const std::string& path);

// What a program has done: its exit status, -1 when a signal has ended it, and what it has written.
struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// Runs a command line of the shell. POSIX alone.
Outcome RunCommand(const std::string& command);

// Collects the engine's log, each entry as "notice: ", "error: ", "log: " or "at: " and its text.
class LogCapture {
 public:
  LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  // What has been logged since the last call.
  std::vector<std::string> Take();

 private:
  std::mutex mutex_;
  std::vector<std::string> entries_;
};

// Stands in for the system's services until it is destroyed. One at a time.
class FakePlatform {
 public:
  FakePlatform();
  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;
  ~FakePlatform();

  void SetClock(std::int32_t minutes);  // a time value
  void SetZone(int minutes_east);
  // Every reading of the tick count is so much later than the one before.
  void SetTicksPerReading(std::uint32_t milliseconds);
  // "[caption] text" of every message box, instead of showing it.
  std::vector<std::string> TakeMessageBoxes();
};

// The time value of "2007-02-05 14:30", in UTC.
std::int32_t At(std::string_view date_and_time);

}  // namespace epg_test
