#include "app/find_screen.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "app/complain.h"
#include "app/display_text.h"
#include "app/local_time.h"
#include "app/programme_search.h"
#include "app/screen.h"
#include "app/text_search.h"

namespace shell {

namespace {

// The text with the words that were found in bold type.
std::string Marked(const Screen& screen, const TextSearch& search, const std::string& text) {
  std::string marked;
  std::size_t at = 0;
  for (const auto& [begin, end] : search.Places(text)) {
    marked.append(text, at, begin - at);
    marked += screen.Bold(text.substr(begin, end - begin));
    at = end;
  }
  return marked.append(text, at);
}

// The part of a long text around the first word that was found.
std::string Excerpt(const TextSearch& search, const std::string& text) {
  constexpr std::size_t kBefore = 60;
  const auto places = search.Places(text);
  if (places.empty() || places[0].first <= kBefore) return text;
  const std::size_t blank = text.find(' ', places[0].first - kBefore);
  return blank < places[0].first ? "..." + text.substr(blank) : text;
}

}  // namespace

ExitStatus ShowFindScreen(const GuideView& view, const Options& options) {
  const TextSearch search(options.words);
  const auto hits = FindHits(view, options, search);
  if (!hits) return kCallFailed;
  if (hits->empty()) {
    std::string words;
    for (const std::string& word : options.words) words += (words.empty() ? "" : " ") + word;
    ComplainAsShell("nothing is found for \"" + words + "\"");
    return kCallFailed;
  }
  const Screen screen;
  Guide& guide = view.Asked();
  int station_columns = 0;
  for (const Hit& hit : *hits)
    station_columns = std::max(station_columns, ColumnsOf(guide.StationName(hit.station)));
  station_columns = std::min(station_columns, 20);
  for (const Hit& hit : *hits) {
    const auto text = [&](Field field) {
      return TextOf(guide, hit.station, hit.broadcast.index, field);
    };
    const std::string episode = text(Field::kEpisode);
    const std::string title = Shown(text(Field::kTitle) + (episode.empty() ? "" : ": " + episode));
    const std::string lead =
        DateTimeText(hit.broadcast.start + view.LocalOffset()) + "  " +
        FitColumns(guide.StationName(hit.station), station_columns, screen.Ellipsis()) + "  ";
    const int rest = std::max(16, screen.Columns() - ColumnsOf(lead));
    std::string fitted =
        ColumnsOf(title) <= rest ? title : FitColumns(title, rest, screen.Ellipsis());
    screen.Print(lead + Marked(screen, search, fitted));
    if (hit.field == Field::kPeople || hit.field == Field::kDescription) {
      for (const std::string& line :
           WrapColumns(Excerpt(search, text(hit.field)), screen.Columns() - 4))
        screen.Print("    " + Marked(screen, search, line));
    }
  }
  return Screen::Finish();
}

}  // namespace shell
