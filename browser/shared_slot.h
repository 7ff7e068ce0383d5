// A place for one shared reference that several threads read and replace.
//
// A flag guards the few instructions that copy the reference. (The library's own atomic shared
// pointer does the same, but in the releases that we build with its load gives the flag back
// without ordering the read before the next write.)
#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "browser/spin_lock.h"

template <typename T>
class CSharedSlot {
 public:
  // A copy of the reference, which keeps what it refers to alive. [any]
  std::shared_ptr<T> Load() const {
    const CSpinLock lock(busy_);
    return reference_;
  }

  // Replaces the reference and gives the earlier one. [any]
  std::shared_ptr<T> Exchange(std::shared_ptr<T> replacement) {
    const CSpinLock lock(busy_);
    return std::exchange(reference_, std::move(replacement));
  }

  // Empties the slot if it still holds `expected`; of several callers one gets true. [any]
  bool ClearIf(const std::shared_ptr<T>& expected) {
    std::shared_ptr<T> dropped;  // outlives the lock
    const CSpinLock lock(busy_);
    if (reference_ != expected) return false;
    dropped = std::move(reference_);
    return true;
  }

 private:
  mutable std::atomic_flag busy_;
  std::shared_ptr<T> reference_;  // under busy_
};
