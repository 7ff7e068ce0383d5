#include "app/guide_page.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "app/complain.h"
#include "app/page_parts.h"
#include "text/windows_1252_utf8.h"

namespace shell {

namespace {

using Json = nlohmann::json;

Json BroadcastOf(const GuideView& view, std::int32_t station,
                 const GuideView::Broadcast& broadcast) {
  static constexpr std::pair<const char*, const char*> kFacts[] = {
      {"With", "$Actors"},       {"Directed by", "$Director"},
      {"Genre", "$Genre"},       {"Year", "$PublishDate"},
      {"Rating", "$RatingBBFC"}, {"Stars", "$StarRating"},
      {"Language", "$Language"}, {"Also", "$Flags"}};
  Guide& guide = view.Asked();
  const auto text = [&](const char* field) {
    return AsUtf8(guide.ProgramData(station, broadcast.index, field));
  };
  Json facts = Json::array();
  for (const auto& [name, field] : kFacts) {
    std::string fact = text(field);
    if (!fact.empty()) facts.push_back({name, std::move(fact)});
  }
  return {broadcast.start,
          broadcast.end,
          AsUtf8(guide.ProgramName(station, broadcast.index)),
          text("$EpisodeTitle"),
          text("$Description"),
          text("$Genre"),
          std::move(facts)};
}

// JSON without a '<', which could end the page's script element.
std::string DataOf(const GuideView& view, const std::vector<std::int32_t>& stations) {
  Json data = {{"begin", view.Begin()},
               {"end", view.End()},
               {"now", view.Now()},
               {"offset", view.LocalOffset()},
               {"stations", Json::array()}};
  for (const std::int32_t station : stations) {
    Json broadcasts = Json::array();
    for (const GuideView::Broadcast& broadcast : view.Broadcasts(station))
      broadcasts.push_back(BroadcastOf(view, station, broadcast));
    data["stations"].push_back({{"name", AsUtf8(view.Asked().StationName(station))},
                                {"broadcasts", std::move(broadcasts)}});
  }
  std::string safe;
  for (const char c : data.dump()) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return safe;
}

std::string PageOf(const std::string& data) {
  std::string page;
  for (std::string_view rest = kPage; !rest.empty();) {
    const std::size_t mark = std::min(rest.find('@'), rest.size());
    page += rest.substr(0, mark);
    rest.remove_prefix(mark);
    const std::pair<std::string_view, std::string_view> parts[] = {
        {"@STYLE@", kPageStyle}, {"@SCRIPT@", kPageScript}, {"@DATA@", data}};
    bool is_part = false;
    for (const auto& [name, part] : parts) {
      if (!rest.starts_with(name)) continue;
      page += part;
      rest.remove_prefix(name.size());
      is_part = true;
      break;
    }
    if (!is_part && !rest.empty()) {
      page += rest[0];
      rest.remove_prefix(1);
    }
  }
  return page;
}

}  // namespace

ExitStatus WriteGuidePage(const GuideView& view, const Options& options) {
  const auto stations = view.FindStations(options.stations);
  if (!stations) return kCallFailed;
  const std::string page = PageOf(DataOf(view, *stations));
  const std::string part = options.html + ".part";
  std::ofstream file(part, std::ios::binary | std::ios::trunc);
  file << page;
  file.close();
  std::error_code error;
  if (file) std::filesystem::rename(part, options.html, error);
  if (file && !error) return kAllDone;
  const std::string reason = error ? error.message() : std::strerror(errno);
  std::filesystem::remove(part, error);
  ComplainAsShell("cannot write " + options.html + ": " + reason);
  return kCallFailed;
}

}  // namespace shell
