#include "app/guide_json.h"

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/complain.h"
#include "app/local_time.h"
#include "app/now_screen.h"
#include "app/programme_search.h"
#include "app/screen.h"
#include "text/windows_1252_utf8.h"

namespace shell {

namespace {

using Json = nlohmann::ordered_json;

Json Time(const GuideView& view, std::int32_t time) {
  return {{"iso", IsoText(time + view.LocalOffset(), view.LocalOffset())}, {"minutes", time}};
}

Json Schedule(const GuideView& view, const Options& options) {
  return {{"file", AsUtf8(options.listings)},
          {"from", Time(view, view.Begin())},
          {"to", Time(view, view.End())},
          {"now", Time(view, view.Now())},
          {"stations", view.Asked().StationCount()},
          {"broadcasts", view.BroadcastCount()}};
}

Json Station(const GuideView& view, std::int32_t station) {
  Guide& guide = view.Asked();
  return {{"index", station},
          {"name", AsUtf8(guide.StationName(station))},
          {"id", AsUtf8(guide.StationId(station))},
          {"broadcastCount", guide.ProgramCount(station)}};
}

// Texts that are there, by their names.
Json Broadcast(const GuideView& view, std::int32_t station, const GuideView::Broadcast& broadcast) {
  static constexpr std::pair<const char*, const char*> kTexts[] = {
      {"episode", "$EpisodeTitle"}, {"description", "$Description"},
      {"genre", "$Genre"},          {"showType", "$ShowType"},
      {"director", "$Director"},    {"actors", "$Actors"},
      {"date", "$PublishDate"},     {"language", "$Language"},
      {"stars", "$StarRating"},     {"rating", "$RatingBBFC"},
      {"flags", "$Flags"}};
  Guide& guide = view.Asked();
  Json json = {{"index", broadcast.index},
               {"start", Time(view, broadcast.start)},
               {"end", Time(view, broadcast.end)},
               {"title", AsUtf8(guide.ProgramName(station, broadcast.index))}};
  for (const auto& [name, field] : kTexts) {
    const std::string text = guide.ProgramData(station, broadcast.index, field);
    if (!text.empty()) json[name] = AsUtf8(text);
  }
  return json;
}

ExitStatus Print(const Json& json) {
  const std::string text = json.dump(2) + '\n';
  std::fwrite(text.data(), 1, text.size(), stdout);
  return Screen::Finish();
}

// Puts the broadcasts of [from, to) into each station.
std::optional<Json> GuideOf(const GuideView& view, const Options& options) {
  const bool details = !options.details.empty();
  const auto begin = view.FindTime(options.at, 30);
  const auto stations =
      begin ? view.FindStations(details ? std::vector{options.details} : options.stations)
            : std::nullopt;
  if (!stations) return std::nullopt;
  const std::int32_t hours = options.hours != 0 ? options.hours : details ? 24 : 3;
  const std::int32_t to = GuideView::Clamped(std::int64_t{*begin} + std::int64_t{hours} * 60);
  Json all = Json::array();
  for (const std::int32_t station : *stations) {
    Json one = Station(view, station);
    one["broadcasts"] = Json::array();
    for (const auto& broadcast : view.Broadcasts(station, *begin, to))
      one["broadcasts"].push_back(Broadcast(view, station, broadcast));
    all.push_back(std::move(one));
  }
  return all;
}

std::optional<Json> NowOf(const GuideView& view, const Options& options) {
  const auto at = view.FindTime(options.at, 1);
  const auto stations = at ? view.FindStations(options.stations) : std::nullopt;
  if (!stations) return std::nullopt;
  Json all = Json::array();
  for (const std::int32_t station : *stations) {
    Json one = Station(view, station);
    const auto [now, next] = FindNowAndNext(view, station, *at);
    one["now"] = now ? Broadcast(view, station, *now) : Json();
    one["next"] = next ? Broadcast(view, station, *next) : Json();
    all.push_back(std::move(one));
  }
  return all;
}

std::optional<Json> StationsOf(const GuideView& view, const Options& options) {
  const auto stations = view.FindStations(options.stations);
  if (!stations) return std::nullopt;
  Json all = Json::array();
  for (const std::int32_t station : *stations) {
    Json one = Station(view, station);
    const auto broadcasts = view.Broadcasts(station);
    if (!broadcasts.empty()) {
      std::int32_t end = broadcasts.front().end;
      for (const auto& broadcast : broadcasts) end = std::max(end, broadcast.end);
      one["from"] = Time(view, broadcasts.front().start);
      one["to"] = Time(view, end);
    }
    all.push_back(std::move(one));
  }
  return all;
}

}  // namespace

ExitStatus PrintJson(const GuideView& view, const Options& options) {
  Json json = {{"schedule", Schedule(view, options)}};
  if (options.command == Command::kFind) {
    const auto hits = FindHits(view, options, TextSearch(options.words));
    if (!hits) return kCallFailed;
    json["found"] = Json::array();
    for (const Hit& hit : *hits) {
      json["found"].push_back({{"field", NameOf(hit.field)},
                               {"station", Station(view, hit.station)},
                               {"broadcast", Broadcast(view, hit.station, hit.broadcast)}});
    }
    const ExitStatus status = Print(json);
    return hits->empty() ? kCallFailed : status;
  }
  auto stations = options.command == Command::kGuide ? GuideOf(view, options)
                  : options.command == Command::kNow ? NowOf(view, options)
                                                     : StationsOf(view, options);
  if (!stations) return kCallFailed;
  json["stations"] = std::move(*stations);
  return Print(json);
}

ExitStatus PrintJsonFailure(const std::string& reason) {
  Print({{"error", AsUtf8(reason)}});
  return kCallFailed;
}

}  // namespace shell
