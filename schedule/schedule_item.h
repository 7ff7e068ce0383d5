// One broadcast of a programme on a station.
//
// Units: times are counts of whole minutes since 1601-01-01 00:00 UTC; -1 is "never set".
// Ownership: a station keeps copies of the items inserted into it; links and programme are views.
#pragma once

#include <cstdint>

#include "host/mxml.h"
#include "schedule/program.h"

struct CScheduleItem {
  CScheduleItem() = default;
  // A copy, not linked, whose texts stand in `memory`, and whose programme's key is that key
  // itself.
  CScheduleItem(const CScheduleItem& other, CScheduleMemory& memory);

  // Empties the record for the next item to be read into it.
  void Reset();

  std::int32_t start = -1;
  std::int32_t end = -1;
  CScheduleItem* next = nullptr;
  CScheduleItem* previous = nullptr;
  const CProgram* program = nullptr;  // null when the programme key matches no programme
  ORVANE::MSTR program_key;
  ORVANE::MSTR station_key;
  // Markers are set when they begin with 'Y'; the others are texts of their source.
  ORVANE::MSTR hd;        // marker
  ORVANE::MSTR stereo;    // marker
  ORVANE::MSTR subtitle;  // marker: closed captions
  ORVANE::MSTR rating_tv;
  ORVANE::MSTR rating_fv;
  ORVANE::MSTR rating_other;
  ORVANE::MSTR repeat;  // marker, or another code of the source
  ORVANE::MSTR aspect;
  ORVANE::MSTR subtitles;
  ORVANE::MSTR new_marker;  // marker
  ORVANE::MSTR premiere;

  // Empty when there is no programme. The view lives as long as the schedule.
  std::string_view GetTitle() const {
    return program != nullptr ? program->title.View() : std::string_view();
  }

  // Fills the fields from the element's children, whose texts move into the record. Times of the
  // TitanTV dialect count from `base_time`. Defined in import/record_readers.cc.
  void ReadScheduleItemFields(ORVANE::MXML::NODE& node, ProviderKind dialect,
                              std::int32_t base_time);
};
