#include "tests/support/test_support.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utility>

#include "host/engine.h"
#include "platform/services.h"
#include "schedule/time_value.h"

namespace epg_test {

TempFile::TempFile(std::string_view content, const std::string& name) {
  std::random_device random;
  do {
    folder_ = (std::filesystem::temp_directory_path() / "epg-test-").generic_string() +
              std::to_string(random());
  } while (!std::filesystem::create_directory(folder_));
  path_ = folder_ + '/' + name;
  Write(content);
}

TempFile::~TempFile() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void TempFile::Write(std::string_view content) const {
  std::ofstream file(path_, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path_);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

LogCapture::LogCapture() {
  ORVANE::SetLogSink([this](ORVANE::ENTRY entry, std::string_view text) {
    static constexpr const char* kPrefixes[] = {"log: ", "notice: ", "error: ", "at: "};
    const std::lock_guard lock(mutex_);
    entries_.push_back(kPrefixes[static_cast<int>(entry)] + std::string(text));
  });
}

LogCapture::~LogCapture() { ORVANE::SetLogSink({}); }

std::vector<std::string> LogCapture::Take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(entries_, {});
}

namespace {
std::atomic<platform::FileTime> fake_clock;
std::atomic<int> fake_zone;
std::atomic<std::uint32_t> fake_ticks;
std::atomic<std::uint32_t> ticks_per_reading;
std::mutex boxes_mutex;
std::vector<std::string> boxes;
}  // namespace

FakePlatform::FakePlatform() {
  platform::overrides.message_box = [](const char* text, const char* caption, unsigned /*style*/) {
    const std::lock_guard lock(boxes_mutex);
    boxes.push_back(std::string("[") + caption + "] " + text);
  };
}

FakePlatform::~FakePlatform() {
  platform::overrides = {};
  TakeMessageBoxes();
}

void FakePlatform::SetClock(std::int32_t minutes) {
  fake_clock = minutes * platform::kTicksPerMinute;
  platform::overrides.clock = [] { return fake_clock.load(); };
}

void FakePlatform::SetZone(int minutes_east) {
  fake_zone = minutes_east;
  platform::overrides.zone_minutes = [] { return fake_zone.load(); };
}

void FakePlatform::SetTicksPerReading(std::uint32_t milliseconds) {
  ticks_per_reading = milliseconds;
  platform::overrides.tick_count = [] { return fake_ticks += ticks_per_reading; };
}

std::vector<std::string> FakePlatform::TakeMessageBoxes() {
  const std::lock_guard lock(boxes_mutex);
  return std::exchange(boxes, {});
}

std::int32_t At(std::string_view date_and_time) {
  return ParseTime(TimeLayout::kYearFirst, std::string(date_and_time));
}

}  // namespace epg_test
