#include "bench/loaders/records.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <random>

namespace loaders {

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

int Number(std::string_view digits) {
  int number = 0;
  for (const char c : digits) number = number * 10 + (c - '0');
  return number;
}

// Of "20261123200000 +0100".
Minutes ReadTime(std::string_view text) {
  if (text.size() < 12) return 0;
  const auto part = [text](std::size_t at, std::size_t count) {
    return Number(text.substr(at, count));
  };
  const std::chrono::year_month_day date(std::chrono::year(part(0, 4)),
                                         std::chrono::month(static_cast<unsigned>(part(4, 2))),
                                         std::chrono::day(static_cast<unsigned>(part(6, 2))));
  Minutes time = Minutes{std::chrono::sys_days(date).time_since_epoch().count()} * 1440 +
                 part(8, 2) * 60 + part(10, 2);
  if (text.size() >= 20) {
    const int zone = part(16, 2) * 60 + part(18, 2);
    time += text[15] == '-' ? zone : -zone;
  }
  return time;
}

std::size_t HashOf(const Programme& programme) {
  std::size_t hash = 0;
  for (const std::string* const text :
       {&programme.title, &programme.episode, &programme.description, &programme.actors}) {
    hash = hash * 31 + std::hash<std::string>{}(*text);
  }
  return hash;
}

bool IsSame(const Programme& a, const Programme& b) {
  return a.title == b.title && a.episode == b.episode && a.description == b.description &&
         a.actors == b.actors;
}

}  // namespace

void Schedule::AddStation(std::string_view key, std::string_view name) {
  if (station_of_.emplace(key, stations_.size()).second) {
    stations_.push_back({std::string(key), std::string(name), {}});
  }
}

void Schedule::Add(Draft& draft) {
  const auto station = station_of_.find(std::string(draft.channel));
  draft.broadcast.start = ReadTime(draft.start);
  draft.broadcast.end = ReadTime(draft.stop);
  if (station != station_of_.end()) {
    const std::size_t hash = HashOf(draft.programme);
    const auto [first, last] = by_hash_.equal_range(hash);
    const auto known = std::find_if(first, last, [&draft](const auto& entry) {
      return IsSame(*entry.second, draft.programme);
    });
    if (known != last) {
      draft.broadcast.programme = known->second;
    } else {
      programmes_.push_back(std::move(draft.programme));
      draft.broadcast.programme = &programmes_.back();
      by_hash_.emplace(hash, &programmes_.back());
    }
    stations_[station->second].broadcasts.push_back(std::move(draft.broadcast));
  }
  draft.programme = {};
  draft.broadcast = {};
}

void Schedule::Finish() {
  for (Station& station : stations_) {
    auto& all = station.broadcasts;
    const auto earlier = [](const Broadcast& a, const Broadcast& b) { return a.start < b.start; };
    if (!std::is_sorted(all.begin(), all.end(), earlier)) {
      std::stable_sort(all.begin(), all.end(), earlier);
    }
    const auto same = [](const Broadcast& a, const Broadcast& b) { return a.start == b.start; };
    all.erase(std::unique(all.begin(), all.end(), same), all.end());
  }
}

const Broadcast* Schedule::At(std::size_t station, Minutes time) const {
  const auto& all = stations_[station].broadcasts;
  auto after = std::upper_bound(
      all.begin(), all.end(), time,
      [](Minutes wanted, const Broadcast& broadcast) { return wanted < broadcast.start; });
  if (after == all.begin()) return nullptr;
  --after;
  return time < after->end ? &*after : nullptr;
}

std::string* FieldOf(Draft& draft, std::string_view element) {
  Programme& programme = draft.programme;
  if (element == "title") return &programme.title;
  if (element == "sub-title") return &programme.episode;
  if (element == "desc") return &programme.description;
  if (element == "category") return &programme.genre;
  if (element == "director") return &programme.director;
  if (element == "actor") return &programme.actors;
  if (element == "date") return &programme.date;
  if (element == "language") return &programme.language;
  if (element == "rating") return &programme.rating;
  if (element == "star-rating") return &programme.stars;
  return nullptr;
}

void SetFlag(Draft& draft, std::string_view element, std::string_view text) {
  Broadcast& broadcast = draft.broadcast;
  if (element == "aspect") broadcast.aspect = text;
  if (element == "stereo") broadcast.stereo = text;
  if (element == "subtitles") broadcast.subtitles = "Y";
  if (element == "new") broadcast.is_new = true;
  if (element == "premiere") broadcast.is_premiere = true;
  if (element == "previously-shown") broadcast.is_repeat = true;
}

int Measure(int argc, char** argv, Loader load) {
  if (argc != 2 && (argc != 4 || std::string_view(argv[2]) != "--queries")) {
    std::fprintf(stderr, "usage: %s FILE [--queries COUNT]\n", argv[0]);
    return 2;
  }
  try {
    auto schedule = std::make_unique<Schedule>();
    const auto began = Clock::now();
    load(argv[1], *schedule);
    schedule->Finish();
    const auto loaded = Clock::now();

    std::size_t items = 0;
    Minutes first = INT64_MAX;
    Minutes last = 0;
    for (const Station& station : schedule->Stations()) {
      items += station.broadcasts.size();
      if (station.broadcasts.empty()) continue;
      first = std::min(first, station.broadcasts.front().start);
      last = std::max(last, station.broadcasts.back().end);
    }
    std::printf("stations %zu programmes %zu items %zu import_ms %.1f", schedule->Stations().size(),
                schedule->ProgrammeCount(), items, Milliseconds(loaded - began));
    if (argc == 4 && items != 0) {
      const int count = std::atoi(argv[3]);
      std::mt19937 random(1);
      std::uniform_int_distribution<std::size_t> any_station(0, schedule->Stations().size() - 1);
      std::uniform_int_distribution<Minutes> any_time(first, last - 1);
      std::size_t found = 0;
      const auto asked = Clock::now();
      for (int i = 0; i < count; ++i) {
        found += schedule->At(any_station(random), any_time(random)) != nullptr ? 1U : 0U;
      }
      const double time = Milliseconds(Clock::now() - asked);
      std::printf(" found %zu query_ns %.1f", found, time * 1e6 / count);
    }
    const auto freed = Clock::now();
    schedule.reset();
    std::printf(" destroy_ms %.1f\n", Milliseconds(Clock::now() - freed));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
    return 1;
  }
}

}  // namespace loaders
