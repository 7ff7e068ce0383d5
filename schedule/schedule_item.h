// One broadcast of a programme on a station.
//
// Units: times are counts of whole minutes since 1601-01-01 00:00 UTC; -1 is "never set".
// Ownership: items and their texts stand in the schedule's memory; links and programme are views.
#pragma once

#include <cstdint>
#include <string_view>

#include "schedule/program.h"
#include "schedule/text.h"

struct CScheduleItem {
  std::int32_t start = -1;
  std::int32_t end = -1;
  CScheduleItem* next = nullptr;
  CScheduleItem* previous = nullptr;
  const CProgram* program = nullptr;  // null when the programme key matches no programme
  CText program_key;
  CText station_key;
  // Markers are set when they begin with 'Y'; the others are texts of their source.
  CText hd;        // marker
  CText stereo;    // marker
  CText subtitle;  // marker: closed captions
  CText rating_tv;
  CText rating_fv;
  CText rating_other;
  CText repeat;  // marker, or another code of the source
  CText aspect;
  CText subtitles;
  CText new_marker;  // marker
  CText premiere;

  // Empty when there is no programme. The view lives as long as the schedule.
  std::string_view GetTitle() const {
    return program != nullptr ? program->title.View() : std::string_view();
  }
};
