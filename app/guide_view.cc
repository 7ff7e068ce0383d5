#include "app/guide_view.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>
#include <system_error>

#include "app/complain.h"
#include "app/documents.h"
#include "app/local_time.h"
#include "text/letters.h"
#include "text/near_miss.h"

namespace shell {

namespace {

std::optional<std::int32_t> WholeNumber(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = !text.empty() && end == text.data() + text.size() && error == std::errc();
  return whole ? std::optional(value) : std::nullopt;
}

}  // namespace

GuideView::GuideView(Guide& guide)
    : guide_(guide),
      now_(guide.Now(1)),
      offset_(ReadPluginTime(guide.TimeText(now_, 0)).value_or(now_) - now_),
      begin_(guide.Start()),
      end_(guide.End()) {
  // If ends are unknown, use the last start instead.
  for (std::int32_t i = 0; i < guide_.StationCount(); ++i) {
    const std::int32_t count = guide_.ProgramCount(i);
    broadcasts_ += count;
    if (count == 0) continue;
    const std::int64_t last = std::int64_t{guide_.ProgramStart(i, count - 1)} + 1;
    end_ = std::max(end_, Clamped(last));
  }
}

std::string GuideView::When(std::int32_t time) const { return DateTimeText(time + offset_); }

bool GuideView::HasBroadcasts() const {
  if (broadcasts_ != 0) return true;
  const std::int32_t count = guide_.StationCount();
  ComplainAsShell(
      "no programme is listed for " +
      (count == 1 ? "the one station" : "any of the " + std::to_string(count) + " stations") +
      "; " + DocumentPath("listings.md") + " says what a programme needs");
  return false;
}

std::optional<std::int32_t> GuideView::FindTime(const std::string& at, std::int32_t step) const {
  const std::int32_t first = Clamped(std::int64_t{begin_} - (begin_ % 30 + 30) % 30);
  if (at.empty()) return NowIsListed() ? guide_.Now(step) : first;
  // The text was checked earlier; what it means depends on the present time.
  const Moment moment = ReadMoment(at, now_ + offset_).value_or(Moment{});
  // A time of day alone is today's, or the first listed day's.
  const std::int64_t usual = (NowIsListed() ? now_ : begin_) + offset_;
  const std::int64_t day = moment.day.value_or(usual - usual % kMinutesOfDay);
  std::int64_t local = day + moment.minute.value_or(0);
  if (!moment.day && !NowIsListed() && local < usual - 30) local += kMinutesOfDay;
  const std::int64_t time = local - offset_;
  const std::int64_t last = moment.minute ? time : time + kMinutesOfDay - 1;
  if (last < begin_ || time >= end_) {
    ComplainAsShell("nothing is listed at " + DateTimeText(local) + "; the schedule runs from " +
                    When(begin_) + " to " + When(end_));
    return std::nullopt;
  }
  // A day begins where its listings do.
  return moment.minute ? Clamped(time) : std::max(Clamped(time), first);
}

std::optional<std::vector<std::int32_t>> GuideView::FindStations(
    const std::vector<std::string>& wanted) const {
  std::vector<std::int32_t> stations;
  for (const std::string& one : wanted) {
    if (!FindStation(one, stations)) return std::nullopt;
  }
  if (wanted.empty()) {
    for (std::int32_t i = 0; i < guide_.StationCount(); ++i) stations.push_back(i);
  }
  return stations;
}

bool GuideView::FindStation(const std::string& wanted, std::vector<std::int32_t>& found) const {
  const std::int32_t count = guide_.StationCount();
  const std::size_t hyphen = wanted.find('-', 1);
  const auto first = WholeNumber(wanted.substr(0, hyphen));
  const auto last = hyphen == std::string::npos ? first : WholeNumber(wanted.substr(hyphen + 1));
  if (first && last && *first >= 0 && *first <= *last && *first < count) {
    for (std::int32_t i = *first; i <= std::min(*last, count - 1); ++i) found.push_back(i);
    return true;
  }
  const std::string text = Lowered(wanted);
  std::vector<std::int32_t> parts;
  std::vector<std::string> names;
  for (std::int32_t i = 0; i < count; ++i) {
    names.push_back(guide_.StationName(i));
    const std::string name = Lowered(names.back());
    const std::string id = Lowered(guide_.StationId(i));
    if (name == text || id == text) {
      found.push_back(i);
      return true;
    }
    if (name.find(text) != std::string::npos || id.find(text) != std::string::npos) {
      parts.push_back(i);
    }
  }
  if (!parts.empty()) {
    found.insert(found.end(), parts.begin(), parts.end());
    return true;
  }
  const std::string near = NearMiss(wanted, names);
  std::string known;
  constexpr std::size_t kMostNames = 12;
  for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
    known += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kMostNames) known += ", ... (" + std::to_string(count) + " in all)";
  ComplainAsShell("there is no station " + wanted + "; " +
                  (near.empty() ? "there are " + known : "did you mean " + near + "?"));
  return false;
}

GuideView::Broadcast GuideView::BroadcastAt(std::int32_t station, std::int32_t index,
                                            std::int32_t count) const {
  constexpr std::int64_t kLongestUnknown = 240;
  const std::int32_t start = guide_.ProgramStart(station, index);
  std::int32_t end = guide_.ProgramEnd(station, index);
  if (end <= start) {
    end = Clamped(start + kLongestUnknown);
    if (index + 1 < count) end = std::min(end, guide_.ProgramStart(station, index + 1));
  }
  return {index, start, end};
}

std::vector<GuideView::Broadcast> GuideView::Broadcasts(std::int32_t station, std::int32_t from,
                                                        std::int32_t to) const {
  constexpr std::int32_t kLookBack = 64;  // for long programmes that others overlap
  const std::int32_t count = guide_.ProgramCount(station);
  std::int32_t low = 0;
  for (std::int32_t high = count; low < high;) {
    const std::int32_t middle = low + (high - low) / 2;
    if (guide_.ProgramStart(station, middle) < from) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  std::vector<Broadcast> found;
  for (std::int32_t index = std::max(0, low - kLookBack); index < count; ++index) {
    const Broadcast broadcast = BroadcastAt(station, index, count);
    if (broadcast.start >= to) break;
    if (broadcast.end > from) found.push_back(broadcast);
  }
  return found;
}

std::vector<GuideView::Broadcast> GuideView::Broadcasts(std::int32_t station) const {
  const std::int32_t count = guide_.ProgramCount(station);
  std::vector<Broadcast> all;
  all.reserve(static_cast<std::size_t>(count));
  for (std::int32_t index = 0; index < count; ++index) {
    all.push_back(BroadcastAt(station, index, count));
  }
  return all;
}

std::int32_t GuideView::Clamped(std::int64_t time) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(time, Limits::min() + 1, Limits::max()));
}

}  // namespace shell
