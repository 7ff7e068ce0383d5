// A schedule as a program would keep it that has no plug-in: standard containers, a text a field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace loaders {

using Minutes = std::int64_t;  // since 1970, UTC

struct Programme {
  std::string title, episode, description, genre, director, actors, date, language, rating, stars;
};

struct Broadcast {
  Minutes start, end;
  const Programme* programme;
  std::string aspect, stereo, subtitles;
  bool is_new, is_premiere, is_repeat;
};

struct Station {
  std::string key, name;
  std::vector<Broadcast> broadcasts;
};

// One XMLTV programme element's fields, as they come.
struct Draft {
  std::string_view start, stop, channel;
  Programme programme;
  Broadcast broadcast = {};
};

class Schedule {
 public:
  void AddStation(std::string_view key, std::string_view name);
  // Keeps one record of programmes of the same texts; gives the draft back empty.
  void Add(Draft& draft);
  // Sorts every station's broadcasts. Queries from then on.
  void Finish();

  // What is on, or null.
  const Broadcast* At(std::size_t station, Minutes time) const;

  const std::vector<Station>& Stations() const { return stations_; }
  std::size_t ProgrammeCount() const { return programmes_.size(); }

 private:
  std::vector<Station> stations_;
  std::unordered_map<std::string, std::size_t> station_of_;  // by key
  std::deque<Programme> programmes_;
  std::unordered_multimap<std::size_t, const Programme*> by_hash_;
};

// The field of a draft that a child element of <programme>, or of its <credits>, fills; null for
// one that is passed over.
std::string* FieldOf(Draft& draft, std::string_view element);
// What an element without a text, or within <video> and <audio>, says.
void SetFlag(Draft& draft, std::string_view element, std::string_view text);

// Makes a schedule of a file with `load`, and prints what it cost:
//   PROGRAM FILE [--queries COUNT]
using Loader = void (*)(const std::string& file, Schedule& schedule);
int Measure(int argc, char** argv, Loader load);

}  // namespace loaders
