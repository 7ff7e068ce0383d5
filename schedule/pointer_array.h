// A growable array of pointers on the general-purpose heap.
//
// Ownership: the array owns its storage, not what the entries point to.
// Errors: an array that cannot grow throws CBadAlloc and stays as it was.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "text/bad_alloc.h"

// Invariants:
// 1. 0 <= count <= capacity <= room; the storage has space for `front_` entries before the first
//    one and for `room_` from it on.
// 2. Every entry of the storage that is not in use is null.
//
// A station with one date that is centuries off has a table of a million empty entries. So beyond a
// page, storage is fresh memory, which the system hands out as untouched zero pages; growing copies
// nothing but the entries that are set; and it grows by half at least, however little is asked for.
template <typename T>
class CPointerArray {
 public:
  explicit CPointerArray(std::int32_t grow_by = 16) : grow_by_(grow_by) {}
  CPointerArray(const CPointerArray&) = delete;
  CPointerArray& operator=(const CPointerArray&) = delete;
  ~CPointerArray() { std::free(storage_); }

  std::int32_t Count() const { return count_; }
  std::int32_t Capacity() const { return capacity_; }

  // REQUIRES: 0 <= index < Count().
  T*& operator[](std::int32_t index) { return begin()[index]; }
  T* operator[](std::int32_t index) const { return begin()[index]; }

  T** begin() { return storage_ + front_; }
  T** end() { return begin() + count_; }
  T* const* begin() const { return storage_ + front_; }
  T* const* end() const { return begin() + count_; }

  // New entries are null. A size of 0 frees the storage; beyond the capacity it grows to `size` and
  // the grow-by entries more.
  void SetSize(std::int32_t size) {
    if (size == 0) {
      std::free(storage_);
      storage_ = nullptr;
      count_ = capacity_ = front_ = room_ = 0;
      return;
    }
    if (size > capacity_) {
      const std::int64_t capacity = static_cast<std::int64_t>(size) + grow_by_;
      if (capacity > room_) Grow(0, capacity);
      capacity_ = static_cast<std::int32_t>(capacity);
    }
    if (size < count_) std::fill(begin() + size, end(), nullptr);
    count_ = size;
  }

  void Append(T* entry) {
    SetSize(count_ + 1);
    (*this)[count_ - 1] = entry;
  }

  // Moves every entry up by `added` positions and puts null entries before them, in one step.
  void AddFront(std::int64_t added) {
    if (added > front_) Grow(added - front_ + std::max(grow_by_, count_ / 2), capacity_);
    const auto taken = static_cast<std::int32_t>(added);
    front_ -= taken;
    room_ += taken;
    capacity_ += taken;
    count_ += taken;
  }

  // Drops the entries and keeps the storage.
  void Clear() {
    std::fill(begin(), end(), nullptr);
    count_ = 0;
  }

 private:
  // A page of them.
  static constexpr std::int64_t kManyEntries = 512;

  // Makes space for `more_front` entries more before the first one, and for `capacity` from it on.
  void Grow(std::int64_t more_front, std::int64_t capacity) {
    const std::int64_t old_total = std::int64_t{front_} + room_;
    const std::int64_t front = front_ + more_front;
    std::int64_t room = std::max<std::int64_t>(capacity, room_);
    const bool many = front + room > kManyEntries;
    if (many && capacity > room_) room = std::max(room, room_ + std::int64_t{room_} / 2);
    const std::int64_t total = front + room;
    if (total > std::numeric_limits<std::int32_t>::max()) throw CBadAlloc();
    const auto bytes = static_cast<std::size_t>(total) * sizeof(T*);
    T** grown = nullptr;
    if (more_front == 0 && !many) {
      grown = static_cast<T**>(std::realloc(static_cast<void*>(storage_), bytes));
      if (grown == nullptr) throw CBadAlloc();
      std::fill(grown + old_total, grown + total, nullptr);
    } else {
      grown = static_cast<T**>(std::calloc(static_cast<std::size_t>(total), sizeof(T*)));
      if (grown == nullptr) throw CBadAlloc();
      for (std::int32_t i = 0; i < count_; ++i) {
        if ((*this)[i] != nullptr) grown[front + i] = (*this)[i];
      }
      std::free(static_cast<void*>(storage_));
    }
    storage_ = grown;
    front_ = static_cast<std::int32_t>(front);
    room_ = static_cast<std::int32_t>(room);
  }

  std::int32_t count_ = 0;
  std::int32_t capacity_ = 0;
  const std::int32_t grow_by_;
  T** storage_ = nullptr;  // Owned.
  std::int32_t front_ = 0;
  std::int32_t room_ = 0;
};
