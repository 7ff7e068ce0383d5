// What the commands that show a schedule share: its range, the present time, and which stations and
// broadcasts are meant.
//
// Units: times are the plug-in's, minutes since 1601-01-01 00:00 UTC; local times as in
//   local_time.h.
// Errors: a request that cannot be met is reported on standard error, and the result is empty.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/guide.h"

namespace shell {

class GuideView {
 public:
  struct Broadcast {
    std::int32_t index;  // in the station's programmes
    std::int32_t start;
    std::int32_t end;  // where it is not known: the next start, some hours on at the most
  };

  // `guide` has a schedule, and must outlive the view.
  explicit GuideView(Guide& guide);

  Guide& Asked() const { return guide_; }
  std::int32_t Now() const { return now_; }
  // What to add to a time to have it in local time.
  std::int64_t LocalOffset() const { return offset_; }
  std::int32_t Begin() const { return begin_; }
  std::int32_t End() const { return end_; }
  std::int64_t BroadcastCount() const { return broadcasts_; }
  bool NowIsListed() const { return now_ >= begin_ && now_ < end_; }
  // Mon 23 Nov 2026 20:15
  std::string When(std::int32_t time) const;

  // True when anything is listed at all.
  bool HasBroadcasts() const;

  // The time that `at` means. Empty is the present time brought down to a multiple of `step`
  // minutes, or the first half hour of the listings where the present is not in them.
  std::optional<std::int32_t> FindTime(const std::string& at, std::int32_t step) const;

  // The stations of a list of indexes (7), ranges (0-9), names and ids, whole or in part; all
  // where the list is empty.
  std::optional<std::vector<std::int32_t>> FindStations(
      const std::vector<std::string>& wanted) const;

  // The station's broadcasts that touch [from, to), in order.
  std::vector<Broadcast> Broadcasts(std::int32_t station, std::int32_t from, std::int32_t to) const;
  // All of them.
  std::vector<Broadcast> Broadcasts(std::int32_t station) const;

  // Within what a time can be.
  static std::int32_t Clamped(std::int64_t time);

 private:
  bool FindStation(const std::string& wanted, std::vector<std::int32_t>& found) const;
  Broadcast BroadcastAt(std::int32_t station, std::int32_t index, std::int32_t count) const;

  Guide& guide_;
  const std::int32_t now_;
  const std::int64_t offset_;
  const std::int32_t begin_;
  std::int32_t end_;
  std::int64_t broadcasts_ = 0;
};

}  // namespace shell
