#include "schedule/station.h"

#include <algorithm>
#include <cassert>

bool CStation::Insert(CNewRecord<CScheduleItem>& item) {
  assert(!item.IsEmpty());
  CScheduleItem* before = nullptr;
  if (first_item_ != nullptr && item->start >= first_item_->start) {
    before = FindPredecessor(*item, static_cast<std::int32_t>(BucketOf(item->start)));
    if (before->start == item->start) return false;
  }
  if (first_item_ == nullptr) {
    InsertFirst(&*item);
  } else if (before == nullptr) {
    InsertBefore(&*item);
  } else {
    InsertBehind(before, &*item);
  }
  ++item_count_;
  first_start_ = first_item_->start;
  schedule_end_ = std::max(schedule_end_, item.Release()->end);
  return true;
}

void CStation::InsertFirst(CScheduleItem* item) {
  buckets_.Append(item);
  first_item_ = last_item_ = item;
  index_base_ = item->start;
  schedule_end_ = item->end;
}

void CStation::InsertBefore(CScheduleItem* item) {
  if (item->start < index_base_) {
    const std::int64_t distance = index_base_ - item->start;
    const std::int64_t added = (distance + kBucketMinutes - 1) / kBucketMinutes;
    buckets_.AddFront(added);
    index_base_ -= added * kBucketMinutes;
  }
  buckets_[0] = item;
  item->next = first_item_;
  first_item_->previous = item;
  first_item_ = item;
}

void CStation::InsertBehind(CScheduleItem* before, CScheduleItem* item) {
  const auto bucket = static_cast<std::int32_t>(BucketOf(item->start));
  if (buckets_.Count() <= bucket) buckets_.SetSize(bucket + 1);
  CScheduleItem*& earliest = buckets_[bucket];
  if (earliest == nullptr || item->start < earliest->start) earliest = item;
  item->next = before->next;
  item->previous = before;
  (item->next != nullptr ? item->next->previous : last_item_) = item;
  before->next = item;
}

// The last item that starts no later than `item`. REQUIRES: there is one.
CScheduleItem* CStation::FindPredecessor(const CScheduleItem& item, std::int32_t bucket) const {
  if (item.start >= last_item_->start) return last_item_;
  CScheduleItem* at = buckets_[bucket];
  if (at == nullptr) return LastItemBelow(bucket);
  if (item.start < at->start) return at->previous;
  while (at->next != nullptr && at->next->start <= item.start) at = at->next;
  return at;
}

// The last item that starts below an empty bucket. REQUIRES: there is one.
//
// Looks down and up at the same time, so that filling a long gap from either end, or from its
// middle, never walks the whole of it again and again.
CScheduleItem* CStation::LastItemBelow(std::int32_t bucket) const {
  for (std::int32_t down = bucket - 1, up = bucket + 1;; --down, ++up) {
    if (up >= buckets_.Count()) return last_item_;
    if (buckets_[up] != nullptr) return buckets_[up]->previous;
    if (CScheduleItem* at = buckets_[down]; at != nullptr) {
      while (at->next != nullptr && BucketOf(at->next->start) == down) at = at->next;
      return at;
    }
  }
}

void CStation::BuildProgramIndex() {
  program_index_.SetSize(item_count_);
  spans_.clear();
  spans_.reserve(static_cast<std::size_t>(item_count_));
  for (CScheduleItem* item = first_item_; item != nullptr; item = item->next) {
    program_index_[static_cast<std::int32_t>(spans_.size())] = item;
    spans_.push_back({item->start, item->end});
  }
}

std::string CStation::GetLabel() const {
  std::string label(network.View());
  if (!label.empty()) label += '/';
  return label += call_sign.View();
}

const CScheduleItem* CStation::GetProgram(std::int32_t index) const {
  return index >= 0 && index < program_index_.Count() ? program_index_[index] : nullptr;
}

// The position of the first item that starts at that time or later.
std::int32_t CStation::FirstFrom(std::int64_t time) const {
  const auto first =
      std::lower_bound(spans_.begin(), spans_.end(), time,
                       [](const Span& span, std::int64_t sought) { return span.start < sought; });
  return static_cast<std::int32_t>(first - spans_.begin());
}

std::int32_t CStation::FindFirstIndex(std::int32_t from, std::int32_t to) const {
  if (spans_.empty() || to <= first_start_ || from >= schedule_end_) return -1;
  const std::int32_t count = GetProgramCount();
  const auto span = [this](std::int32_t at) { return spans_[static_cast<std::size_t>(at)]; };
  const auto begin_of = [this](std::int64_t bucket) {
    return index_base_ + bucket * kBucketMinutes;
  };
  const std::int64_t last_bucket = buckets_.Count() - 1;
  const auto bucket = std::clamp<std::int64_t>(BucketOf(from), 0, last_bucket);
  // The earliest item of that bucket, or of the nearest one below that has any.
  std::int32_t at = FirstFrom(begin_of(bucket));
  if (at == count || BucketOf(span(at).start) != bucket)
    at = FirstFrom(begin_of(BucketOf(span(at - 1).start)));
  if (at > 0 && span(at - 1).end > from) {
    --at;
  } else {
    while (at < count && span(at).end <= from) ++at;
    if (at == count || span(at).start >= to) return -1;
  }
  return at;
}

std::int32_t CStation::IndexOf(const CScheduleItem& item) const {
  const std::int32_t at = FirstFrom(item.start);
  return GetProgram(at) == &item ? at : GetProgramCount();
}
