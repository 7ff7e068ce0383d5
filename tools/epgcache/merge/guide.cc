#include "tools/epgcache/merge/guide.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "text/near_miss.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::int32_t kLatest = std::numeric_limits<std::int32_t>::max();

// A stop before its start may have been given the wrong date at midnight: it is taken to be on the
// next day where the programme then lasts no longer than this.
constexpr std::int64_t kLongestNight = std::int64_t{12} * 3600;

// In place of a text's number: the text was not read.
constexpr std::uint32_t kNoText = std::numeric_limits<std::uint32_t>::max();

void Mark(Guide::Item& item, Count repair) {
  item.repairs = static_cast<std::uint16_t>(item.repairs | 1U << repair);
}
static_assert(kRepairs <= 16);

bool Matches(const std::string& pattern, const std::string& text) {
  return EqualIgnoringCase(pattern, text) ||
         fnmatch(pattern.c_str(), text.c_str(), FNM_CASEFOLD) == 0;
}

bool IsCalled(const Guide::Station& station, const std::string& pattern) {
  return Matches(pattern, station.id) ||
         std::any_of(station.names.begin(), station.names.end(),
                     [&pattern](const std::string& name) { return Matches(pattern, name); });
}

// What lasts a minute at least comes first, then what has a stop, then the number of fields, then
// of bytes.
std::uint32_t RankOf(const Guide::Item& item, const Programme& programme, std::size_t bytes) {
  const auto fields = std::count_if(programme.fields.begin(), programme.fields.end(),
                                    [](const std::string& text) { return !text.empty(); });
  constexpr std::uint32_t kMostBytes = (std::uint32_t{1} << 25) - 1;
  static_assert(kFields <= 31);
  return ((item.repairs >> kBrief & 1U) == 0 ? std::uint32_t{1} << 31 : 0) |
         (item.end != Guide::kNoEnd ? std::uint32_t{1} << 30 : 0) |
         static_cast<std::uint32_t>(fields) << 25 |
         static_cast<std::uint32_t>(std::min<std::size_t>(bytes, kMostBytes));
}

}  // namespace

Guide::Guide(const GuideOptions& options, TargetText& text) : options_(options), text_(text) {}

std::size_t Guide::StationOf(const std::string& id) {
  const auto [entry, is_new] = station_numbers_.try_emplace(id, stations_.size());
  if (is_new) {
    stations_.emplace_back().id = id;
    stations_.back().place = PlaceOf(stations_.back());
  }
  return entry->second;
}

int Guide::PlaceOf(const Station& station) const {
  if (options_.stations.empty()) return 0;
  const auto found =
      std::find_if(options_.stations.begin(), options_.stations.end(),
                   [&station](const std::string& pattern) { return IsCalled(station, pattern); });
  if (found != options_.stations.end()) return static_cast<int>(found - options_.stations.begin());
  // Its names may follow later.
  return station.declared ? kUnwanted : kUndecided;
}

void Guide::Add(const Channel& channel) {
  if (channel.id.empty()) {
    ++tally_[kChannelsWithoutId];
    return;
  }
  Station& station = stations_[StationOf(channel.id)];
  if (!station.names.empty()) return;
  station.declared = true;
  station.names = channel.names;
  station.place = PlaceOf(station);
}

// Sets the item's times; false when there is no start.
bool Guide::ReadTimes(const Programme& programme) {
  const auto start = ParseXmltvTime(programme.start, options_.zone);
  if (!start) return false;
  const auto stop = ParseXmltvTime(programme.stop, options_.zone);
  item_.start = static_cast<std::int32_t>(start->seconds / 60);
  item_.end = kNoEnd;
  item_.repairs = 0;
  if (!stop && !programme.stop.empty()) Mark(item_, kUnreadableStop);
  const auto has = [&](OwnZone zone) {
    return start->zone == zone || (stop && stop->zone == zone);
  };
  if (has(OwnZone::kUnknown)) Mark(item_, kUnknownZone);
  if (has(OwnZone::kMissing) && !options_.zone_is_chosen) Mark(item_, kMissingZone);
  if (!stop) return true;
  std::int64_t seconds = stop->seconds;
  if (seconds <= start->seconds) {
    Mark(item_, kStopNotAfterStart);
    seconds += 86'400;
    if (seconds <= start->seconds || seconds - start->seconds > kLongestNight) return true;
  }
  if (seconds - start->seconds < 60) Mark(item_, kBrief);
  const std::int64_t end = std::max(seconds / 60, std::int64_t{item_.start} + 1);
  if (end <= kLatest) item_.end = static_cast<std::int32_t>(end);
  return true;
}

bool Guide::Begin(const Programme& programme) {
  if (programme.channel.empty()) {
    ++tally_[kWithoutChannel];
    return false;
  }
  station_ = StationOf(programme.channel);
  if (stations_[station_].place == kUnwanted) {
    ++tally_[kOtherStations];
    return false;
  }
  if (!ReadTimes(programme)) {
    ++tally_[kWithoutStart];
    return false;
  }
  item_.input = input_;
  item_.programme = kNoText;
  item_.rank = 0;
  const bool outside =
      item_.start >= options_.to || (item_.end != kNoEnd && item_.end <= options_.from);
  // It still marks the end of the preceding one.
  if (outside) stations_[station_].items.push_back(item_);
  return !outside;
}

std::uint32_t Guide::File(std::span<const std::string> fields, char mark, Fields& where) {
  fields_.clear();
  Unencodable unencodable;
  for (std::size_t number = 0; number < fields.size(); ++number) {
    if (fields[number].empty()) continue;
    char name[4] = {mark};
    const std::string_view tag(
        name, static_cast<std::size_t>(std::to_chars(name + 1, std::end(name), number).ptr - name));
    fields_.append("<").append(tag).append(">");
    text_.Append(fields_, fields[number], unencodable);
    fields_.append("</").append(tag).append(">");
  }
  const auto keep = [this, &where] {
    const auto number = static_cast<std::uint32_t>(where.texts.size());
    return &where.texts.emplace_back(Fields::Text{where.characters.Keep(fields_), number});
  };
  const std::uint32_t number = where.known.FindOrAdd(fields_, keep).first->number;
  if (unencodable.transliterated != 0) where.unencodable[number] = unencodable;
  return number;
}

void Guide::Add(const Programme& programme) {
  const std::span all = programme.fields;
  item_.programme = File(all.first(kItemFields), 'p', programmes_);
  const std::size_t bytes = fields_.size();
  item_.details = File(all.subspan(kItemFields), 'i', details_);
  item_.rank = RankOf(item_, programme, bytes + fields_.size());
  stations_[station_].items.push_back(item_);
}

Unencodable Guide::UnencodableOfProgramme(std::uint32_t number) const {
  const auto found = programmes_.unencodable.find(number);
  return found == programmes_.unencodable.end() ? Unencodable() : found->second;
}

Unencodable Guide::UnencodableOfDetails(std::uint32_t number) const {
  const auto found = details_.unencodable.find(number);
  return found == details_.unencodable.end() ? Unencodable() : found->second;
}

void Guide::Finish() {
  ChooseStations();
  for (Station& station : stations_) {
    LeaveOneAStart(station.items);
    SetMissingEnds(station.items);
    if (input_ > 0) MergeInputs(station.items);
    FindOverlaps(station.items);
    CutToTime(station.items);
  }
  // Only programmes created it, and none are left.
  std::erase_if(stations_,
                [](const Station& station) { return !station.declared && station.items.empty(); });
  tally_[kUndeclaredStations] = static_cast<std::uint64_t>(
      std::count_if(stations_.begin(), stations_.end(),
                    [](const Station& station) { return !station.declared; }));
}

void Guide::ChooseStations() {
  std::vector<std::string> known;
  for (const std::string& pattern : options_.stations) {
    if (std::any_of(stations_.begin(), stations_.end(),
                    [&pattern](const Station& station) { return IsCalled(station, pattern); }))
      continue;
    if (known.empty()) {
      for (const Station& station : stations_) {
        known.push_back(station.id);
        known.insert(known.end(), station.names.begin(), station.names.end());
      }
    }
    missing_.emplace_back(pattern, NearMiss(pattern, known));
  }
  std::erase_if(stations_, [this](const Station& station) {
    if (station.place >= 0) return false;
    tally_[kOtherStations] += station.items.size();
    return true;
  });
  std::stable_sort(stations_.begin(), stations_.end(),
                   [](const Station& a, const Station& b) { return a.place < b.place; });
}

// Sorts items by input and start, and keeps one item of each start.
void Guide::LeaveOneAStart(std::vector<Item>& items) {
  std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
    if (a.input != b.input) return a.input < b.input;
    if (a.start != b.start) return a.start < b.start;
    return a.rank > b.rank;
  });
  const auto end = std::unique(items.begin(), items.end(), [](const Item& a, const Item& b) {
    return a.input == b.input && a.start == b.start;
  });
  tally_[kSameStart] += static_cast<std::uint64_t>(items.end() - end);
  items.erase(end, items.end());
}

// Within each input: another input's programme does not end this one's.
void Guide::SetMissingEnds(std::vector<Item>& items) const {
  for (auto item = items.begin(); item != items.end(); ++item) {
    if (item->end != kNoEnd) continue;
    const auto next = std::next(item);
    const bool has_next = next != items.end() && next->input == item->input;
    const std::int64_t longest = std::int64_t{item->start} + options_.default_length;
    const std::int64_t end = has_next ? std::min<std::int64_t>(next->start, longest) : longest;
    Mark(*item, has_next && end == next->start ? kEndedByNext : kEndedByLength);
    item->end = static_cast<std::int32_t>(std::min<std::int64_t>(end, kLatest));
  }
}

// While an earlier input has a programme, a later input's programme is dropped or ends.
void Guide::MergeInputs(std::vector<Item>& items) {
  std::stable_sort(items.begin(), items.end(),
                   [](const Item& a, const Item& b) { return a.start < b.start; });
  const std::size_t inputs = std::size_t{input_} + 1;
  // Up to when the programmes of an input, and all before it, are on.
  std::vector<std::int64_t> reach(inputs, kNoEnd);
  tally_[kInEarlierInput] += std::erase_if(items, [&reach](const Item& item) {
    if (item.input > 0 && reach[item.input - 1U] > item.start) return true;
    const std::int64_t end = std::max<std::int64_t>(item.end, std::int64_t{item.start} + 1);
    for (std::size_t input = item.input; input < reach.size() && reach[input] < end; ++input)
      reach[input] = end;
    return false;
  });
  // And from when on the next ones are.
  std::vector<std::int32_t> begin(inputs, kLatest);
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    if (item->input > 0 && begin[item->input - 1U] < item->end) {
      item->end = begin[item->input - 1U];
      Mark(*item, kCutByEarlierInput);
    }
    std::fill(begin.begin() + item->input, begin.end(), item->start);
  }
}

void Guide::FindOverlaps(std::vector<Item>& items) const {
  for (std::size_t i = 1; i < items.size(); ++i) {
    Item& item = items[i - 1];
    if (item.end <= items[i].start) continue;
    Mark(item, options_.cut_overlaps ? kOverlapCut : kOverlapKept);
    if (options_.cut_overlaps) item.end = items[i].start;
  }
}

void Guide::CutToTime(std::vector<Item>& items) {
  tally_[kOutsideTime] += std::erase_if(items, [this](const Item& item) {
    return item.start >= options_.to || item.end <= options_.from;
  });
  for (const Item& item : items) {
    for (std::size_t repair = 0; repair < kRepairs; ++repair)
      tally_[repair] += item.repairs >> repair & 1U;
  }
}

}  // namespace epgcache
