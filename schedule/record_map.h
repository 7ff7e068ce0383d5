// Records by their keys, compared exactly.
//
// Ownership: the records are somebody else's. Their keys must not change while they are in the map.
// Errors: std::bad_alloc leaves the map as it was.
#pragma once

#include <cstddef>
#include <cstdint>
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

  std::size_t Count() const { return count_; }

  // Null when there is none.
  Record* Find(std::string_view key) const {
    return records_.empty() ? nullptr : records_[PlaceOf(key, HashOf(key))];
  }

  // The record of that key and whether it is new: when there was none, it is what `make` gives.
  template <typename Maker>
  std::pair<Record*, bool> FindOrAdd(std::string_view key, Maker make) {
    if (count_ * 4 >= records_.size() * 3) Grow();
    const std::uint32_t hash = HashOf(key);
    const std::size_t place = PlaceOf(key, hash);
    const bool is_new = records_[place] == nullptr;
    if (is_new) {
      records_[place] = make();
      hashes_[place] = hash;
      ++count_;
    }
    return {records_[place], is_new};
  }

  void Clear() {
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

  std::vector<Record*> records_;
  std::vector<std::uint32_t> hashes_;
  std::size_t count_ = 0;
};
