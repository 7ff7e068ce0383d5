// The store of one imported schedule: stations, programmes and, through the stations, broadcasts.
//
// Ownership: the store owns its stations and the memory in which programmes and broadcasts stand;
//   what it returns are views into it. It has no virtual destructor: a store is owned as what it
//   was made (a std::shared_ptr made from the concrete class does that).
// Threads: filled by one thread; read-only from any thread after the hand-over.
// Errors: lookups return null; std::bad_alloc when memory runs out.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "host/mstr.h"
#include "schedule/pointer_array.h"
#include "schedule/program.h"
#include "schedule/provider_kind.h"
#include "schedule/record_map.h"
#include "schedule/schedule_memory.h"
#include "schedule/station.h"

class CProgressIndicator;

class CProviderData {
 public:
  explicit CProviderData(ProviderKind kind = ProviderKind::kOther) : kind_(kind) {}
  CProviderData(const CProviderData&) = delete;
  CProviderData& operator=(const CProviderData&) = delete;
  ~CProviderData() { Clear(); }

  // Reads the named file into the store. True: `status` holds a summary; false: the reason.
  // `progress` may be null. The base class reads no file. [loader]
  [[nodiscard]] virtual bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                                       CProgressIndicator* progress);

  // Reads a file in the cache format into the store, whatever its kind; otherwise like ImportXML.
  // Defined in import/cache_load.cc. [loader]
  [[nodiscard]] bool LoadCacheXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                                  CProgressIndicator* progress);

  ProviderKind Kind() const { return kind_; }

  // Empties the store.
  void Clear();

  CStation* FindStation(std::string_view key) const;
  const CProgram* FindProgram(std::string_view key) const;

  // True: the store has taken the station and the pointer is empty; its key must not change from
  // then on. False: one of that key is there already; the offered one is still the caller's.
  // REQUIRES: the station's texts and items stand in this store's memory.
  [[nodiscard]] bool AddStation(std::unique_ptr<CStation>& station);

  // To be called a little before the program is added or looked for; the second one, where there is
  // time, between the two.
  void PrefetchProgram(std::string_view key) const { program_map_.Prefetch(key); }
  void PrefetchProgramKey(std::string_view key) const { program_map_.PrefetchKey(key); }

  // The programme of that key. When there was none it is `program`, which the store has taken and
  // which is empty then; otherwise `program` is still the caller's.
  // REQUIRES: `program` is not empty and was made by this store.
  const CProgram* AddProgram(CNewRecord<CProgram>& program);

  // Empty records to be filled and filed.
  CNewRecord<CProgram> NewProgram() { return {memory_.programs, memory_.program_texts}; }
  CNewRecord<CScheduleItem> NewItem() { return {memory_.items, memory_.texts}; }

  // Where this schedule's records stand.
  CScheduleMemory& Memory() { return memory_; }

  // "Stations: %i   Programmes: %i   Schedule Items: %i"
  ORVANE::MSTR GetStatistics() const;

  // Stations by position, in the order in which they were added; null when there is none.
  std::int32_t GetStationCount() const { return stations_.Count(); }
  CStation* GetStation(std::int32_t index) const;

  // The earliest start and the latest end of all broadcasts, in minutes since 1601-01-01 00:00 UTC;
  // both stay as they are when there is no broadcast.
  void GetTimeRange(std::int32_t& start, std::int32_t& end) const;

 private:
  const ProviderKind kind_;

 public:
  ORVANE::MSTR provider_id;     // empty until an import sets it
  ORVANE::MSTR base_time_text;  // of imported TitanTV data, else empty

 private:
  CRecordMap<const CProgram> program_map_;
  CRecordMap<CStation> station_map_;
  CPointerArray<CStation> stations_;  // Owned.
  CScheduleMemory memory_;
};
