// Records by their keys, compared exactly.
//
// Ownership: the map owns the records. Their keys must not change while they are in it.
// Errors: std::bad_alloc leaves the map as it was.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "schedule/key_hash.h"

// `Record` has a text `key`.
//
// An open table of pointers beside one of the keys' hashes: the keys themselves stand in the
// records alone, and a search looks at a record only where the hash is right. A node-based map took
// twice the memory for a schedule's hundred thousands of programmes.
//
// Invariants:
// 1. The number of places is a power of two, or 0; at least a quarter of them is free.
// 2. From the place that a record's hash names to the place where it stands, none is free.
template <typename Record>
class CRecordMap {
 public:
  CRecordMap() = default;
  CRecordMap(const CRecordMap&) = delete;
  CRecordMap& operator=(const CRecordMap&) = delete;
  ~CRecordMap() { Clear(); }

  std::size_t Count() const { return count_; }

  // Null when there is none.
  Record* Find(std::string_view key) const {
    return records_.empty() ? nullptr : records_[PlaceOf(key, HashOf(key))];
  }

  // True: the map has taken the record, and `record` is empty. False: one of that key is there
  // already.
  bool Add(std::unique_ptr<Record>& record) {
    if (count_ * 4 >= records_.size() * 3) Grow();
    const std::uint32_t hash = HashOf(record->key.View());
    const std::size_t place = PlaceOf(record->key.View(), hash);
    if (records_[place] != nullptr) return false;
    hashes_[place] = hash;
    records_[place] = record.release();
    ++count_;
    return true;
  }

  void Clear() {
    for (Record* const record : records_) delete record;
    records_.clear();
    hashes_.clear();
    count_ = 0;
  }

 private:
  // The half of it is enough for as many places as there can be.
  static std::uint32_t HashOf(std::string_view key) {
    return static_cast<std::uint32_t>(KeyHash(key));
  }

  // Where the record of that key stands, or would.
  std::size_t PlaceOf(std::string_view key, std::uint32_t hash) const {
    const std::size_t mask = records_.size() - 1;
    std::size_t place = hash & mask;
    while (records_[place] != nullptr &&
           (hashes_[place] != hash || !(records_[place]->key == key))) {
      place = (place + 1) & mask;
    }
    return place;
  }

  void Grow() {
    const std::size_t size = records_.empty() ? 16 : records_.size() * 2;
    std::vector<Record*> records(size);
    std::vector<std::uint32_t> hashes(size);
    for (std::size_t i = 0; i < records_.size(); ++i) {
      if (records_[i] == nullptr) continue;
      std::size_t place = hashes_[i] & (size - 1);
      while (records[place] != nullptr) place = (place + 1) & (size - 1);
      records[place] = records_[i];
      hashes[place] = hashes_[i];
    }
    records_.swap(records);
    hashes_.swap(hashes);
  }

  std::vector<Record*> records_;  // Owned.
  std::vector<std::uint32_t> hashes_;
  std::size_t count_ = 0;
};
