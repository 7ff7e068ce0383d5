// One station of a schedule, and the index that finds its items by time.
//
// Units: times are counts of whole minutes since 1601-01-01 00:00 UTC; -1 is "never set".
// Ownership: a station's items and texts stand in its schedule's memory, the tables of its index
//   are its own; pointers it returns are views.
// Threads: filled by one thread; read-only from any thread afterwards.
// Errors: a lookup that finds nothing returns null; only std::bad_alloc is thrown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "schedule/pointer_array.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_memory.h"
#include "schedule/text.h"

// Invariants of the time index:
// 1. The items form a doubly linked list with strictly increasing starts.
// 2. Bucket k holds the earliest item that starts in [base + k * width, base + (k + 1) * width), or
//    null when none does.
// 3. The first item lies in bucket 0; the table reaches as far as the last item's bucket at least.
class CStation {
 public:
  static constexpr std::int32_t kBucketMinutes = 180;

  CStation() = default;
  CStation(const CStation&) = delete;
  CStation& operator=(const CStation&) = delete;

  // Files `item` at its place in start order. [loader]
  //
  // True: the station has taken the item and `item` is empty. False: an item with that start is
  // there already; the station is unchanged and `item` is still the caller's. An item that starts
  // after all others, as a file in order gives them, is filed without a search.
  // REQUIRES: the item is not empty.
  bool Insert(CNewRecord<CScheduleItem>& item);

  // Puts every item, in start order, into the programme index, which the look-ups below need. To be
  // called when an import has inserted its last item.
  void BuildProgramIndex();

  std::int32_t CountItems() const { return item_count_; }

  // "network/call sign", or the call sign alone when there is no network.
  std::string GetLabel() const;

  std::int32_t GetProgramCount() const { return program_index_.Count(); }

  // The item at that position of the programme index; null when there is none.
  const CScheduleItem* GetProgram(std::int32_t index) const;

  // The position of the item on the air at `from`, else of the next to start before `to`; -1 when
  // there is none. An end is exclusive. Starts at the bucket of `from` and looks back no further
  // than one item, so where items overlap an earlier one that still runs can be missed.
  std::int32_t FindFirstIndex(std::int32_t from, std::int32_t to) const;

  // The same as an item; null when there is none.
  const CScheduleItem* FindFirstProgram(std::int32_t from, std::int32_t to) const {
    return GetProgram(FindFirstIndex(from, to));
  }

  // The item's position in the programme index, or the number of entries when it is not there.
  std::int32_t IndexOf(const CScheduleItem& item) const;

  // The list of items; null when there is none.
  const CScheduleItem* FirstItem() const { return first_item_; }
  // The latest end of any item.
  std::int32_t ScheduleEnd() const { return schedule_end_; }

  // The time index, for those who check it.
  std::int64_t IndexBase() const { return index_base_; }
  const CPointerArray<CScheduleItem>& Buckets() const { return buckets_; }

  // The key must not change once the station is in a store.
  CText key;
  CText call_sign;
  CText network;
  std::int32_t rf_channel = -1;
  std::int32_t second_channel = -1;
  std::int32_t third_channel = -1;

 private:
  std::int64_t BucketOf(std::int64_t time) const { return (time - index_base_) / kBucketMinutes; }
  void InsertFirst(CScheduleItem* item);
  void InsertBefore(CScheduleItem* item);
  void InsertBehind(CScheduleItem* before, CScheduleItem* item);
  CScheduleItem* FindPredecessor(const CScheduleItem& item, std::int32_t bucket) const;
  CScheduleItem* LastItemBelow(std::int32_t bucket) const;
  std::int32_t FirstFrom(std::int64_t time) const;

  std::int64_t index_base_ = 0;  // 64 bits: it moves below the earliest start
  std::int32_t schedule_end_ = 0;
  CScheduleItem* first_item_ = nullptr;
  CPointerArray<CScheduleItem> buckets_;
  CPointerArray<CScheduleItem> program_index_;
  // Of its entries. An item of a large schedule is not in the processor's cache, and all that a
  // search looks at of a station is smaller than a few of its items.
  struct Span {
    std::int32_t start;
    std::int32_t end;
  };
  std::vector<Span> spans_;
  std::int32_t first_start_ = 0;
  std::int32_t item_count_ = 0;
  CScheduleItem* last_item_ = nullptr;
};
