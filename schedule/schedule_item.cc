#include "schedule/schedule_item.h"

#include "schedule/schedule_memory.h"

using ORVANE::MSTR;

namespace {

// All but the programme key.
constexpr MSTR CScheduleItem::*kTexts[] = {
    &CScheduleItem::station_key,  &CScheduleItem::hd,         &CScheduleItem::stereo,
    &CScheduleItem::subtitle,     &CScheduleItem::rating_tv,  &CScheduleItem::rating_fv,
    &CScheduleItem::rating_other, &CScheduleItem::repeat,     &CScheduleItem::aspect,
    &CScheduleItem::subtitles,    &CScheduleItem::new_marker, &CScheduleItem::premiere,
};

// A stored programme's key stands in the schedule's memory already.
MSTR KeyOf(const CScheduleItem& item, CScheduleMemory& memory) {
  if (item.program == nullptr) return memory.Keep(item.program_key);
  return item.program->key.OnHeap() ? memory.Keep(item.program->key) : item.program->key.Alias();
}

}  // namespace

CScheduleItem::CScheduleItem(const CScheduleItem& other, CScheduleMemory& memory)
    : start(other.start),
      end(other.end),
      program(other.program),
      program_key(KeyOf(other, memory)) {
  for (const auto text : kTexts) {
    if (!(other.*text).IsEmpty()) this->*text = memory.Keep(other.*text);
  }
}

void CScheduleItem::Reset() {
  start = end = -1;
  program = nullptr;
  program_key.Reset();
  for (const auto text : kTexts) (this->*text).Reset();
}
