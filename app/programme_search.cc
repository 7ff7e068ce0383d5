#include "app/programme_search.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <tuple>

#include "app/local_time.h"

namespace shell {

namespace {

constexpr Field kFields[] = {Field::kTitle, Field::kEpisode, Field::kPeople, Field::kDescription};

const char* TemplateOf(Field field) {
  static constexpr const char* kTemplates[] = {"[$Title]", "[$EpisodeTitle]",
                                               "[$Actors][$(, )$Director]", "[$Description]"};
  return kTemplates[static_cast<std::size_t>(field)];
}

}  // namespace

std::string_view NameOf(Field field) {
  static constexpr std::string_view kNames[] = {"title", "episode", "people", "description"};
  return kNames[static_cast<std::size_t>(field)];
}

std::string TextOf(Guide& guide, std::int32_t station, std::int32_t index, Field field) {
  return guide.ProgramData(station, index, TemplateOf(field));
}

std::optional<std::vector<Hit>> FindHits(const GuideView& view, const Options& options,
                                         const TextSearch& search) {
  std::int32_t from = GuideView::Clamped(INT64_MIN);
  std::int32_t to = GuideView::Clamped(INT64_MAX);
  if (!options.from.empty() || options.days != 0) {
    const auto begin = view.FindTime(options.from, 1);
    if (!begin) return std::nullopt;
    from = *begin;
    if (options.days != 0)
      to = GuideView::Clamped(std::int64_t{from} + std::int64_t{options.days} * kMinutesOfDay);
  }
  const auto stations = view.FindStations(options.stations);
  if (!stations) return std::nullopt;
  std::vector<Field> fields;
  std::copy_if(
      std::begin(kFields), std::end(kFields), std::back_inserter(fields), [&options](Field field) {
        return options.fields.empty() || std::find(options.fields.begin(), options.fields.end(),
                                                   NameOf(field)) != options.fields.end();
      });
  std::string all_fields;
  for (const Field field : fields) (all_fields += TemplateOf(field)) += ' ';
  std::vector<Hit> hits;
  for (const std::int32_t station : *stations) {
    for (const GuideView::Broadcast& broadcast : view.Broadcasts(station, from, to)) {
      // One call tells most broadcasts apart; words have no blanks in them.
      const std::string all = view.Asked().ProgramData(station, broadcast.index, all_fields);
      std::uint64_t missing = search.All();
      if (search.Missing(all, missing) != 0) continue;
      for (const Field field : fields) {
        missing = search.Missing(TextOf(view.Asked(), station, broadcast.index, field), missing);
        if (missing != 0) continue;
        hits.push_back({station, broadcast, field});
        break;
      }
    }
  }
  std::stable_sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) {
    return std::tuple(a.field, a.broadcast.start) < std::tuple(b.field, b.broadcast.start);
  });
  return hits;
}

}  // namespace shell
