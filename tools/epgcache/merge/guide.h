// The guide being built: the contents of all inputs, sorted, repaired and trimmed.
//
// Units: times are whole minutes since 1601-01-01 00:00 UTC.
// Threads: one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "schedule/record_map.h"
#include "schedule/text.h"
#include "schedule/text_blocks.h"
#include "tools/epgcache/merge/times.h"
#include "tools/epgcache/read/programme.h"
#include "tools/epgcache/tally.h"
#include "tools/epgcache/write/target_text.h"

namespace epgcache {

struct GuideOptions {
  Zone zone;                        // of times that name none
  bool zone_is_chosen = false;      // otherwise it is a guess
  std::int32_t default_length = 0;  // minutes, of a programme that nothing ends
  bool cut_overlaps = false;
  // What is kept: programmes that are on at some time in here.
  std::int64_t from = 0;
  std::int64_t to = std::numeric_limits<std::int64_t>::max();
  // And on these stations, by patterns of ids or names; in this order. Empty: all, in the order of
  // the guides.
  std::vector<std::string> stations;
};

class Guide final : public GuideConsumer {
 public:
  // One broadcast.
  struct Item {
    std::int32_t start;
    std::int32_t end;         // kNoEnd until the guide is finished, when nothing says
    std::uint32_t programme;  // its text's number
    std::uint32_t details;    // that of the item's own fields
    std::uint32_t rank;       // of items with one start the highest stays
    std::uint16_t input;
    std::uint16_t repairs;  // a bit each
  };
  static constexpr std::int32_t kNoEnd = -1;

  struct Station {
    std::string id;
    std::vector<std::string> names;
    bool declared = false;
    int place = kUndecided;  // in the list of stations that are wanted
    std::vector<Item> items;
  };
  static constexpr int kUndecided = -1;
  static constexpr int kUnwanted = -2;

  // Both outlive the guide.
  Guide(const GuideOptions& options, TargetText& text);

  static constexpr std::size_t kMostInputs = 60'000;

  // What follows is from another input.
  void NextInput() { ++input_; }

  void Add(const Channel& channel) override;
  bool Begin(const Programme& programme) override;
  void Add(const Programme& programme) override;

  // Puts every station's items in order. Nothing is taken afterwards.
  void Finish();

  // The requested stations, each with its items by start.
  const std::vector<Station>& Stations() const { return stations_; }
  // The fields of a programme, or an item, as they stand in the file.
  std::string_view ProgrammeText(std::uint32_t number) const {
    return programmes_.texts[number].key.View();
  }
  std::string_view DetailsText(std::uint32_t number) const {
    return details_.texts[number].key.View();
  }
  std::size_t ProgrammeTexts() const { return programmes_.texts.size(); }
  // What the encoding does not have of them.
  Unencodable UnencodableOfProgramme(std::uint32_t number) const;
  Unencodable UnencodableOfDetails(std::uint32_t number) const;

  const epgcache::Tally& Tally() const { return tally_; }
  // The requested stations that were not found, each with the nearest id or name, if any is near.
  const std::vector<std::pair<std::string, std::string>>& MissingStations() const {
    return missing_;
  }

 private:
  // Texts, each once, numbered from 0 in order of arrival; and what is unencodable in some of them.
  struct Fields {
    struct Text {
      CText key;
      std::uint32_t number;
    };
    CTextBlocks characters;
    std::deque<Text> texts;
    CRecordMap<Text> known;
    std::unordered_map<std::uint32_t, Unencodable> unencodable;
  };

  std::size_t StationOf(const std::string& id);
  int PlaceOf(const Station& station) const;
  bool ReadTimes(const Programme& programme);
  std::uint32_t File(std::span<const std::string> fields, char mark, Fields& where);
  void ChooseStations();
  void LeaveOneAStart(std::vector<Item>& items);
  void SetMissingEnds(std::vector<Item>& items) const;
  void MergeInputs(std::vector<Item>& items);
  void FindOverlaps(std::vector<Item>& items) const;
  void CutToTime(std::vector<Item>& items);

  const GuideOptions& options_;
  TargetText& text_;
  epgcache::Tally tally_ = {};

  std::vector<Station> stations_;
  std::unordered_map<std::string, std::size_t> station_numbers_;
  Fields programmes_;
  Fields details_;
  std::vector<std::pair<std::string, std::string>> missing_;
  std::uint16_t input_ = 0;

  // The programme that has begun.
  std::size_t station_ = 0;
  Item item_ = {};
  std::string fields_;
};

}  // namespace epgcache
