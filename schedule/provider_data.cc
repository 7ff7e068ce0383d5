#include "schedule/provider_data.h"

#include <algorithm>
#include <cassert>

using ORVANE::MSTR;

bool CProviderData::ImportXML(const MSTR& /*file_name*/, MSTR& status,
                              CProgressIndicator* /*progress*/) {
  status = "CProviderData::ImportXML() - This function does nothing in the base class.";
  return false;
}

void CProviderData::Clear() {
  base_time_text = MSTR();
  provider_id = MSTR();
  // Items refer to programmes, so stations go first.
  station_map_.Clear();
  for (CStation* const station : stations_) delete station;
  stations_.Clear();
  program_map_.Clear();
  memory_.Clear();
}

CStation* CProviderData::FindStation(std::string_view key) const { return station_map_.Find(key); }

const CProgram* CProviderData::FindProgram(std::string_view key) const {
  return program_map_.Find(key);
}

bool CProviderData::AddStation(std::unique_ptr<CStation>& station) {
  const auto file = [&] {
    stations_.Append(station.get());
    return station.release();
  };
  return station_map_.FindOrAdd(station->key.View(), file).second;
}

const CProgram* CProviderData::AddProgram(CNewRecord<CProgram>& program) {
  assert(!program.IsEmpty());
  return program_map_.FindOrAdd(program->key.View(), [&] { return program.Release(); }).first;
}

MSTR CProviderData::GetStatistics() const {
  std::int32_t items = 0;
  for (const CStation* const station : stations_) items += station->CountItems();
  MSTR text;
  text.Format("Stations: %i   Programmes: %i   Schedule Items: %i", stations_.Count(),
              static_cast<int>(program_map_.Count()), items);
  return text;
}

CStation* CProviderData::GetStation(std::int32_t index) const {
  return index >= 0 && index < stations_.Count() ? stations_[index] : nullptr;
}

void CProviderData::GetTimeRange(std::int32_t& start, std::int32_t& end) const {
  bool any = false;
  for (const CStation* const station : stations_) {
    if (station->FirstItem() == nullptr) continue;
    const std::int32_t first = station->FirstItem()->start;
    start = any ? std::min(start, first) : first;
    end = any ? std::max(end, station->ScheduleEnd()) : station->ScheduleEnd();
    any = true;
  }
}
