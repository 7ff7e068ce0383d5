#include "bench/sample_listings.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "import/import_driver.h"
#include "platform/calendar.h"

namespace bench {

namespace {

constexpr int kStations = 48;
constexpr int kDays = 14;
constexpr std::int32_t kUnixEpoch = platform::kUnixEpoch / platform::kTicksPerMinute;
constexpr std::int32_t kBegin = kUnixEpoch + 20'000 * 1440;

struct Programme {
  std::string key, title, episode, description, genre, director, actors;
};

struct Broadcast {
  std::int32_t start, end;
  const Programme* programme;
};

class Guide {
 public:
  Guide() {
    for (auto& station : broadcasts_) {
      for (std::int32_t at = kBegin; at < kBegin + kDays * 1440;) {
        const std::int32_t end = at + 10 + 5 * static_cast<std::int32_t>(Below(12));
        station.push_back({at, end, NextProgramme()});
        at = end;
        ++count_;
      }
    }
  }

  const std::array<std::vector<Broadcast>, kStations>& Broadcasts() const { return broadcasts_; }
  const std::vector<std::unique_ptr<Programme>>& Programmes() const { return programmes_; }
  std::int64_t Count() const { return count_; }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  std::string Words(std::size_t count) {
    static constexpr const char* kWords[] = {
        "harbour", "the",   "night",  "of",      "a",     "lantern", "winter", "and",
        "between", "cross", "silver", "orchard", "river", "without", "glass",  "morning",
        "stone",   "in",    "garden", "long",    "quiet", "engine",  "under",  "letters"};
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
      if (i != 0) text += ' ';
      text += kWords[Below(std::size(kWords))];
    }
    return text;
  }

  const Programme* NextProgramme() {
    if (!programmes_.empty() && Below(4) == 0) return programmes_[Below(programmes_.size())].get();
    auto programme = std::make_unique<Programme>();
    programme->key = "P" + std::to_string(programmes_.size());
    programme->title = Words(2 + Below(3));
    programme->episode = Words(3);
    programme->description = Words(20 + Below(50));
    programme->genre = Words(1);
    programme->director = Words(2);
    programme->actors = Words(2) + ", " + Words(2) + ", " + Words(2);
    programmes_.push_back(std::move(programme));
    return programmes_.back().get();
  }

  std::mt19937 random_{1};
  std::vector<std::unique_ptr<Programme>> programmes_;
  std::array<std::vector<Broadcast>, kStations> broadcasts_;
  std::int64_t count_ = 0;
};

const Guide& TheGuide() {
  static const Guide guide;
  return guide;
}

std::string Stamp(std::int32_t minutes, const char* format) {
  const std::time_t seconds = (std::time_t{minutes} - kUnixEpoch) * 60;
  std::tm broken_down = {};
  ::gmtime_r(&seconds, &broken_down);
  std::ostringstream text;
  text << std::put_time(&broken_down, format);
  return text.str();
}

std::string Element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">\n";
}

std::string Key(std::size_t station) { return "station" + std::to_string(station) + ".example"; }

void WriteXMLTV(std::ostream& out) {
  out << "<?xml version=\"1.0\"?>\n<tv generator-info-name=\"XMLTV\">\n";
  for (std::size_t i = 0; i < kStations; ++i) {
    out << "<channel id=\"" << Key(i) << "\">\n"
        << Element("display-name", "Network " + std::to_string(i)) << "</channel>\n";
  }
  std::size_t i = 0;
  for (const auto& station : TheGuide().Broadcasts()) {
    for (const auto& [start, end, programme] : station) {
      out << "<programme start=\"" << Stamp(start, "%Y%m%d%H%M%S +0000") << "\" stop=\""
          << Stamp(end, "%Y%m%d%H%M%S +0000") << "\" channel=\"" << Key(i) << "\">\n"
          << Element("title", programme->title) << Element("sub-title", programme->episode)
          << Element("desc", programme->description) << "<credits>\n"
          << Element("director", programme->director) << Element("actor", programme->actors)
          << "</credits>\n"
          << Element("category", programme->genre) << "</programme>\n";
    }
    ++i;
  }
  out << "</tv>\n";
}

void WriteCache(std::ostream& out) {
  out << "<ProviderData xmlns=\"http://www.norvex.example\" EPGSource=\"3\">\n<ProgramMap>\n";
  for (const auto& programme : TheGuide().Programmes()) {
    out << "<Prog>\n"
        << Element("f1", programme->key) << Element("f2", programme->title)
        << Element("f3", programme->episode) << Element("f4", programme->description)
        << Element("f5", programme->genre) << Element("f7", programme->director)
        << Element("f8", programme->actors) << "</Prog>\n";
  }
  out << "</ProgramMap>\n<StationList>\n";
  std::size_t i = 0;
  for (const auto& station : TheGuide().Broadcasts()) {
    out << "<Station>\n<StationData>\n"
        << Element("f1", Key(i)) << Element("f2", "Network " + std::to_string(i))
        << "</StationData>\n<Schedule>\n";
    for (const auto& [start, end, programme] : station) {
      out << "<Item>\n"
          << Element("f1", std::to_string(start)) << Element("f2", std::to_string(end))
          << Element("f3", programme->key) << "</Item>\n";
    }
    out << "</Schedule>\n</Station>\n";
    ++i;
  }
  out << "</StationList>\n</ProviderData>\n";
}

void WriteTitanTV(std::ostream& out) {
  out << "<ProgramDataCollection xmlns=\"http://www.titantv.com/services/dataservice\">\n"
      << Element("ErrorCode", "0") << "<ProgramData>\n"
      << Element("ProviderID", "bench") << Element("BaseTime", Stamp(kBegin, "%Y-%m-%dT%H:%M"))
      << "<Stations>\n";
  for (std::size_t i = 0; i < kStations; ++i) {
    out << "<Station>" << Element("station_id", Key(i))
        << Element("network", "Network " + std::to_string(i)) << "</Station>\n";
  }
  out << "</Stations>\n<Programs>\n";
  for (const auto& programme : TheGuide().Programmes()) {
    out << "<Program>\n"
        << Element("program_id", programme->key) << Element("title", programme->title)
        << Element("episode_title", programme->episode)
        << Element("description", programme->description) << Element("genre", programme->genre)
        << Element("director", programme->director) << "</Program>\n";
  }
  out << "</Programs>\n<Schedules>\n";
  std::size_t i = 0;
  for (const auto& station : TheGuide().Broadcasts()) {
    for (const auto& [start, end, programme] : station) {
      out << "<Schedule>\n"
          << Element("station_id", Key(i)) << Element("program_id", programme->key)
          << Element("start_time", std::to_string(start - kBegin))
          << Element("end_time", std::to_string(end - kBegin)) << "</Schedule>\n";
    }
    ++i;
  }
  out << "</Schedules>\n</ProgramData>\n</ProgramDataCollection>\n";
}

void WriteRadioTimes(std::ostream& out) {
  out << "<Programmes>\n";
  std::size_t i = 0;
  for (const auto& station : TheGuide().Broadcasts()) {
    for (const auto& [start, end, programme] : station) {
      out << "<Programme>\n"
          << Element("ChannelName", Key(i)) << Element("Title", programme->title)
          << Element("Episode", programme->episode) << Element("Genre", programme->genre)
          << Element("Description", programme->description)
          << Element("Date", Stamp(start, "%d/%m/%Y"))
          << Element("StartTime", Stamp(start, "%H:%M")) << Element("EndTime", Stamp(end, "%H:%M"))
          << "</Programme>\n";
    }
    ++i;
  }
  out << "</Programmes>\n";
}

// A folder for the files, as long as the program runs.
class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "epg-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  std::string Path(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

std::string& UsedListings() {
  static std::string path;
  return path;
}

}  // namespace

const char* NameOf(Format format) {
  static constexpr const char* kNames[] = {"xmltv", "cache", "titantv", "radiotimes"};
  return kNames[static_cast<int>(format)];
}

const std::string& FileOf(Format format) {
  static const Folder folder;
  static std::map<Format, std::string> files;
  std::string& path = files[format];
  if (path.empty()) {
    static constexpr void (*kWriters[])(std::ostream&) = {WriteXMLTV, WriteCache, WriteTitanTV,
                                                          WriteRadioTimes};
    path = folder.Path(NameOf(format)) + ".xml";
    std::ofstream out(path, std::ios::binary);
    kWriters[static_cast<int>(format)](out);
  }
  return path;
}

std::int64_t BytesOf(const std::string& path) {
  return static_cast<std::int64_t>(std::filesystem::file_size(path));
}

std::int64_t ItemCount() { return TheGuide().Count(); }

void UseListings(std::string path) { UsedListings() = std::move(path); }

const std::string& ListingsFile() {
  return UsedListings().empty() ? FileOf(Format::kXMLTV) : UsedListings();
}

std::shared_ptr<CProviderData> Import(const std::string& path) {
  ORVANE::MSTR status;
  auto store = ImportEPGFile(ORVANE::MSTR(path.c_str()), status, nullptr);
  if (store == nullptr) throw std::runtime_error(path + ": " + status.text);
  return store;
}

const CProviderData& Schedule() {
  static const std::shared_ptr<CProviderData> schedule = Import(ListingsFile());
  return *schedule;
}

std::vector<Query> RandomQueries() {
  std::int32_t begin = 0;
  std::int32_t end = 0;
  Schedule().GetTimeRange(begin, end);
  std::mt19937 random(42);
  std::uniform_int_distribution<std::int32_t> station(0, Schedule().GetStationCount() - 1);
  std::uniform_int_distribution<std::int32_t> time(begin, end - 1);
  std::vector<Query> queries(1 << 18);
  for (Query& query : queries) query = {station(random), time(random)};
  return queries;
}

}  // namespace bench
