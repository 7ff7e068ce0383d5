// Fill a schedule's records from listing elements, in the three ways in which formats name the
// values: TitanTV's element names, XMLTV's (channels only), and numbers (any other kind).
//
// A child that a reader does not know is skipped; of several of one name the last one counts.
//
// Ownership: the records' texts are copies in the schedule's memory.
// Threads: the import's. [loader]
// Errors: CBadAlloc.
#pragma once

#include <cstdint>

#include "host/mxml.h"
#include "schedule/program.h"
#include "schedule/provider_kind.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_memory.h"
#include "schedule/station.h"
#include "xml/elements.h"

// The station's texts go to `texts`.
void ReadStationFields(const ORVANE::MXML::NODE& node, ProviderKind dialect, CStation& station,
                       CTextBlocks& texts);

void ReadProgramFields(const ORVANE::MXML::NODE& node, ProviderKind dialect,
                       CNewRecord<CProgram>& program);

// Times of the TitanTV dialect count from `base_time`.
void ReadScheduleItemFields(const ORVANE::MXML::NODE& node, ProviderKind dialect,
                            std::int32_t base_time, CNewRecord<CScheduleItem>& item);

// A station of an XMLTV channel: its first two names that are not empty.
void ReadStationFields(const CElement& channel, CStation& station, CTextBlocks& texts);

// The same from elements with numbered fields.
void ReadProgramFields(CElementRange elements, CNewRecord<CProgram>& program);
void ReadScheduleItemFields(CElementRange elements, CNewRecord<CScheduleItem>& item);
