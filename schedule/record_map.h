// Records by their keys, compared exactly.
//
// Ownership: the records are the caller's. Their keys must not change while they are in the map.
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
// An open table of positions with their keys' hashes: the keys themselves stand in the records
// alone, and a search looks at a record only where the hash is right. At eight bytes a place it is
// small enough for a processor's cache, while a node-based map took ten times that for each record.
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

  std::size_t Count() const { return records_.size(); }

  // Has the processor fetch what a search for the key begins with, while the caller does something
  // else: in a large schedule that takes as long as all the rest of the search.
  void Prefetch(std::string_view key) const {
#if defined(__GNUC__)
    if (!places_.empty()) __builtin_prefetch(&places_[HashOf(key) & (places_.size() - 1)]);
#endif
  }

  // The same for what the search goes on with, the key of the record that is noted there. To be
  // called when the first has had its time.
  void PrefetchKey(std::string_view key) const {
#if defined(__GNUC__)
    if (places_.empty()) return;
    const std::uint32_t hash = HashOf(key);
    const Place& place = places_[hash & (places_.size() - 1)];
    if (place.hash != hash || place.position == kFree) return;
    __builtin_prefetch(records_[place.position]->key.Characters());
#endif
  }

  // Null when there is none.
  Record* Find(std::string_view key) const {
    if (places_.empty()) return nullptr;
    const std::uint32_t position = places_[PlaceOf(key, HashOf(key))].position;
    return position != kFree ? records_[position] : nullptr;
  }

  // The record of that key and whether it is new: when there was none, it is what `make` gives.
  template <typename Maker>
  std::pair<Record*, bool> FindOrAdd(std::string_view key, Maker make) {
    if (records_.size() * 4 >= places_.size() * 3) Grow();
    const std::uint32_t hash = HashOf(key);
    Place& place = places_[PlaceOf(key, hash)];
    const bool is_new = place.position == kFree;
    if (is_new) {
      records_.push_back(make());
      place = {hash, static_cast<std::uint32_t>(records_.size() - 1)};
    }
    return {records_[place.position], is_new};
  }

  void Clear() {
    places_.clear();
    records_.clear();
  }

 private:
  static constexpr std::uint32_t kFree = 0xffffffff;

  struct Place {
    std::uint32_t hash = 0;
    std::uint32_t position = kFree;  // of the record
  };

  // 32 bits suffice for as many places as there can be.
  static std::uint32_t HashOf(std::string_view key) {
    return static_cast<std::uint32_t>(KeyHash(key));
  }

  // Where the record of that key is noted, or would be.
  std::size_t PlaceOf(std::string_view key, std::uint32_t hash) const {
    const std::size_t mask = places_.size() - 1;
    std::size_t at = hash & mask;
    while (places_[at].position != kFree &&
           (places_[at].hash != hash || !(records_[places_[at].position]->key == key))) {
      at = (at + 1) & mask;
    }
    return at;
  }

  void Grow() {
    std::vector<Place> grown(places_.empty() ? 16 : places_.size() * 2);
    const std::size_t mask = grown.size() - 1;
    for (const Place& place : places_) {
      if (place.position == kFree) continue;
      std::size_t at = place.hash & mask;
      while (grown[at].position != kFree) at = (at + 1) & mask;
      grown[at] = place;
    }
    records_.reserve(grown.size() / 4 * 3);  // so that what `make` has done is never undone
    places_.swap(grown);
  }

  std::vector<Place> places_;
  std::vector<Record*> records_;  // in the order in which they came
};
