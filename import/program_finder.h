// Finds the programmes of a file's items, a few items late.
//
// In a large schedule a search waits for memory several times in a row. Meanwhile the processor
// fetches what each search will look at, which takes a tenth off a whole load.
//
// Ownership: items and store are the caller's, and outlive the finder.
// Threads: the import's. [loader]
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "schedule/provider_data.h"
#include "schedule/schedule_item.h"

class CProgramFinder {
 public:
  explicit CProgramFinder(const CProviderData& store) : store_(store) {}

  // Has the item's programme found at some later call, at the latest by Finish. No programme may be
  // added in between.
  void Add(CScheduleItem& item) {
    store_.PrefetchProgram(item.program_key.View());
    const CScheduleItem* const halfway = waiting_[(added_ + kWaiting / 2) % kWaiting];
    if (halfway != nullptr) store_.PrefetchProgramKey(halfway->program_key.View());
    Find(std::exchange(waiting_[added_ % kWaiting], &item));
    ++added_;
  }

  // Finds what has not been found yet.
  void Finish() {
    for (CScheduleItem*& item : waiting_) Find(std::exchange(item, nullptr));
  }

 private:
  static constexpr std::size_t kWaiting = 8;

  void Find(CScheduleItem* item) const {
    if (item != nullptr) item->program = store_.FindProgram(item->program_key.View());
  }

  const CProviderData& store_;
  std::array<CScheduleItem*, kWaiting> waiting_ = {};  // the oldest is replaced by the next
  std::size_t added_ = 0;
};
