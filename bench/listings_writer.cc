#include "bench/listings_writer.h"

#include <ctime>
#include <iomanip>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/calendar.h"

namespace bench {

namespace {

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
  explicit Guide(const GuideSize& size) : random_(size.seed), broadcasts_(size.stations) {
    for (auto& station : broadcasts_) {
      for (std::int32_t at = kBegin; at < kBegin + size.days * 1440;) {
        const std::int32_t end = at + 10 + 5 * static_cast<std::int32_t>(Below(12));
        station.push_back({at, end, NextProgramme()});
        at = end;
        ++count_;
      }
    }
  }

  const std::vector<std::vector<Broadcast>>& Broadcasts() const { return broadcasts_; }
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

  std::mt19937 random_;
  std::vector<std::unique_ptr<Programme>> programmes_;
  std::vector<std::vector<Broadcast>> broadcasts_;
  std::int64_t count_ = 0;
};

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

void WriteXMLTV(std::ostream& out, const Guide& guide) {
  out << "<?xml version=\"1.0\"?>\n<tv generator-info-name=\"XMLTV\">\n";
  for (std::size_t i = 0; i < guide.Broadcasts().size(); ++i) {
    out << "<channel id=\"" << Key(i) << "\">\n"
        << Element("display-name", "Network " + std::to_string(i)) << "</channel>\n";
  }
  std::size_t i = 0;
  for (const auto& station : guide.Broadcasts()) {
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

void WriteCache(std::ostream& out, const Guide& guide) {
  out << "<ProviderData xmlns=\"http://www.norvex.example\" EPGSource=\"3\">\n<ProgramMap>\n";
  for (const auto& programme : guide.Programmes()) {
    out << "<Prog>\n"
        << Element("f1", programme->key) << Element("f2", programme->title)
        << Element("f3", programme->episode) << Element("f4", programme->description)
        << Element("f5", programme->genre) << Element("f7", programme->director)
        << Element("f8", programme->actors) << "</Prog>\n";
  }
  out << "</ProgramMap>\n<StationList>\n";
  std::size_t i = 0;
  for (const auto& station : guide.Broadcasts()) {
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

void WriteTitanTV(std::ostream& out, const Guide& guide) {
  out << "<ProgramDataCollection xmlns=\"http://www.titantv.com/services/dataservice\">\n"
      << Element("ErrorCode", "0") << "<ProgramData>\n"
      << Element("ProviderID", "bench") << Element("BaseTime", Stamp(kBegin, "%Y-%m-%dT%H:%M"))
      << "<Stations>\n";
  for (std::size_t i = 0; i < guide.Broadcasts().size(); ++i) {
    out << "<Station>" << Element("station_id", Key(i))
        << Element("network", "Network " + std::to_string(i)) << "</Station>\n";
  }
  out << "</Stations>\n<Programs>\n";
  for (const auto& programme : guide.Programmes()) {
    out << "<Program>\n"
        << Element("program_id", programme->key) << Element("title", programme->title)
        << Element("episode_title", programme->episode)
        << Element("description", programme->description) << Element("genre", programme->genre)
        << Element("director", programme->director) << "</Program>\n";
  }
  out << "</Programs>\n<Schedules>\n";
  std::size_t i = 0;
  for (const auto& station : guide.Broadcasts()) {
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

void WriteRadioTimes(std::ostream& out, const Guide& guide) {
  out << "<Programmes>\n";
  std::size_t i = 0;
  for (const auto& station : guide.Broadcasts()) {
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

}  // namespace

const char* NameOf(Format format) {
  static constexpr const char* kNames[] = {"xmltv", "cache", "titantv", "radiotimes"};
  return kNames[static_cast<int>(format)];
}

std::int64_t WriteListings(std::ostream& out, Format format, const GuideSize& size) {
  static constexpr void (*kWriters[])(std::ostream&, const Guide&) = {
      WriteXMLTV, WriteCache, WriteTitanTV, WriteRadioTimes};
  const Guide guide(size);
  kWriters[static_cast<int>(format)](out, guide);
  return guide.Count();
}

}  // namespace bench
