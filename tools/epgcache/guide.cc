#include "tools/epgcache/guide.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::int32_t kLatest = std::numeric_limits<std::int32_t>::max();

// A stop before its start may have been given the wrong date at midnight: it is taken to be on the
// next day where the programme then lasts no longer than this.
constexpr std::int32_t kLongestNight = 12 * 60;

// In place of a text's number: the text was not read.
constexpr std::uint32_t kNoText = std::numeric_limits<std::uint32_t>::max();

void Mark(Guide::Item& item, Repair repair) {
  item.repairs = static_cast<std::uint16_t>(item.repairs | 1U << repair);
}

bool IsCalled(const Guide::Station& station, std::string_view name) {
  return SameLetters(station.id, name) ||
         std::any_of(station.names.begin(), station.names.end(),
                     [name](const std::string& own) { return SameLetters(own, name); });
}

// Fields first, then bytes.
std::uint32_t RichnessOf(const Programme& programme, std::size_t bytes) {
  const auto is_set = [](const std::string& text) { return !text.empty(); };
  const auto fields = std::count_if(programme.prog.begin(), programme.prog.end(), is_set) +
                      std::count_if(programme.item.begin(), programme.item.end(), is_set);
  constexpr std::uint32_t kMostBytes = (std::uint32_t{1} << 26) - 1;
  return static_cast<std::uint32_t>(fields) << 26 |
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
                   [&station](const std::string& name) { return IsCalled(station, name); });
  if (found != options_.stations.end()) return static_cast<int>(found - options_.stations.begin());
  // Its names may follow later.
  return station.declared ? kUnwanted : kUndecided;
}

void Guide::Add(const Channel& channel) {
  if (channel.id.empty()) {
    ++tally_.channels_without_id;
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
  item_.start = start->minutes;
  item_.end = stop ? stop->minutes : kNoEnd;
  item_.repairs = 0;
  if (!stop && !programme.stop.empty()) Mark(item_, kUnreadableStop);
  if (start->zone_unknown || (stop && stop->zone_unknown)) Mark(item_, kUnknownZone);
  if (stop && item_.end <= item_.start) {
    Mark(item_, kStopNotAfterStart);
    const std::int64_t next_day = std::int64_t{item_.end} + 1440;
    const bool fits = next_day > item_.start && next_day - item_.start <= kLongestNight;
    item_.end = fits && next_day <= kLatest ? static_cast<std::int32_t>(next_day) : kNoEnd;
  }
  return true;
}

bool Guide::Begin(const Programme& programme) {
  if (programme.channel.empty()) {
    ++tally_.without_channel;
    return false;
  }
  station_ = StationOf(programme.channel);
  if (stations_[station_].place == kUnwanted) {
    ++tally_.other_stations;
    return false;
  }
  if (!ReadTimes(programme)) {
    ++tally_.without_start;
    return false;
  }
  item_.input = input_;
  item_.programme = kNoText;
  item_.richness = 0;
  const bool outside =
      item_.start >= options_.to || (item_.end != kNoEnd && item_.end <= options_.from);
  // It still marks the end of the preceding one.
  if (outside) stations_[station_].items.push_back(item_);
  return !outside;
}

template <std::size_t kCount>
std::uint32_t Guide::File(const std::array<std::string, kCount>& fields, char mark, Fields& where) {
  fields_.clear();
  Unencodable unencodable;
  for (std::size_t number = 0; number < kCount; ++number) {
    if (fields[number].empty()) continue;
    char name[4] = {mark};
    const std::string_view tag(
        name, static_cast<std::size_t>(std::to_chars(name + 1, std::end(name), number).ptr - name));
    fields_.append("<").append(tag).append(">");
    text_.Append(fields_, fields[number], unencodable);
    fields_.append("</").append(tag).append(">");
  }
  const std::uint32_t number = where.texts.Add(fields_);
  if (unencodable.transliterated != 0) where.unencodable[number] = unencodable;
  return number;
}

void Guide::Add(const Programme& programme) {
  item_.programme = File(programme.prog, 'p', programmes_);
  const std::size_t bytes = fields_.size();
  item_.details = File(programme.item, 'i', details_);
  item_.richness = RichnessOf(programme, bytes + fields_.size());
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
  tally_.undeclared_stations = static_cast<std::uint64_t>(
      std::count_if(stations_.begin(), stations_.end(),
                    [](const Station& station) { return !station.declared; }));
}

void Guide::ChooseStations() {
  for (const std::string& name : options_.stations) {
    if (std::none_of(stations_.begin(), stations_.end(),
                     [&name](const Station& station) { return IsCalled(station, name); }))
      missing_.push_back(name);
  }
  std::erase_if(stations_, [this](const Station& station) {
    if (station.place >= 0) return false;
    tally_.other_stations += station.items.size();
    return true;
  });
  std::stable_sort(stations_.begin(), stations_.end(),
                   [](const Station& a, const Station& b) { return a.place < b.place; });
}

// Sorts items by input and start, and keeps the richest item of each start.
void Guide::LeaveOneAStart(std::vector<Item>& items) {
  std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
    if (a.input != b.input) return a.input < b.input;
    if (a.start != b.start) return a.start < b.start;
    return a.richness > b.richness;
  });
  const auto end = std::unique(items.begin(), items.end(), [](const Item& a, const Item& b) {
    return a.input == b.input && a.start == b.start;
  });
  tally_.same_start += static_cast<std::uint64_t>(items.end() - end);
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
  tally_.in_earlier_input += std::erase_if(items, [&reach](const Item& item) {
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
    Mark(item, kOverlap);
    if (options_.cut_overlaps) item.end = items[i].start;
  }
}

void Guide::CutToTime(std::vector<Item>& items) {
  tally_.outside_time += std::erase_if(items, [this](const Item& item) {
    return item.start >= options_.to || item.end <= options_.from;
  });
  for (const Item& item : items) {
    for (std::size_t repair = 0; repair < kRepairs; ++repair)
      tally_.repaired[repair] += item.repairs >> repair & 1U;
  }
}

}  // namespace epgcache
