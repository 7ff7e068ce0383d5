// What has been done to guides, in numbers of programmes where nothing else is said.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace epgcache {

enum Count : std::size_t {
  // What may be mended in a programme; as an index of counts, or a bit of an item.
  kUnreadableStop,
  kStopNotAfterStart,
  kBrief,
  kEndedByNext,
  kEndedByLength,
  kUnknownZone,
  kMissingZone,
  kCutByEarlierInput,
  kOverlapCut,
  kOverlapKept,
  kRepairs,

  kUndeclaredStations = kRepairs,
  kMendedPlaces,
  kHtmlReferences,
  kTransliterated,  // characters
  kSlashes,         // in names of stations

  kChannelsWithoutId,
  kWithoutChannel,
  kWithoutStart,
  kSameStart,
  kInEarlierInput,
  kOutsideTime,
  kOtherStations,
  kUnknownReferences,
  kLostCharacters,

  kCounts
};

using Tally = std::array<std::uint64_t, kCounts>;

}  // namespace epgcache
