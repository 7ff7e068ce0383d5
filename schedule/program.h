// The details of a programme, which several broadcasts can share.
#pragma once

#include "host/mxml.h"
#include "schedule/provider_kind.h"

struct CScheduleMemory;

struct CProgram {
  CProgram() = default;
  // A copy whose texts stand in `memory`.
  CProgram(const CProgram& other, CScheduleMemory& memory);

  // Empties the record for the next programme to be read into it.
  void Reset();

  ORVANE::MSTR key;
  ORVANE::MSTR title;
  ORVANE::MSTR episode_title;
  ORVANE::MSTR description;
  ORVANE::MSTR genre;
  ORVANE::MSTR show_type;
  ORVANE::MSTR director;
  ORVANE::MSTR actors;
  ORVANE::MSTR publish_date;
  ORVANE::MSTR language;
  ORVANE::MSTR rating_bbfc;
  ORVANE::MSTR star_rating;
  ORVANE::MSTR black_and_white;  // a marker: set when it begins with 'Y'

  // Fills the fields from the element's children, whose texts move into the record. Defined in
  // import/record_readers.cc.
  void ReadProgramFields(ORVANE::MXML::NODE& node, ProviderKind dialect);
};
