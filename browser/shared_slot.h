// A place for one shared reference that several threads read and replace.
//
// A flag guards the few instructions that copy the reference. (The library's own atomic shared
// pointer does the same, but in the releases that we build with its load gives the flag back
// without ordering the read before the next write.)
#pragma once

#include <atomic>
#include <memory>
#include <utility>

template <typename T>
class CSharedSlot {
 public:
  // A copy of the reference, which keeps what it refers to alive. [any]
  std::shared_ptr<T> Load() const {
    const Hold hold(busy_);
    return reference_;
  }

  // Replaces the reference and gives the earlier one. [any]
  std::shared_ptr<T> Exchange(std::shared_ptr<T> replacement) {
    const Hold hold(busy_);
    return std::exchange(reference_, std::move(replacement));
  }

  // Empties the slot if it still holds `expected`; of several callers one gets true. [any]
  bool ClearIf(const std::shared_ptr<T>& expected) {
    std::shared_ptr<T> dropped;  // outlives the hold
    const Hold hold(busy_);
    if (reference_ != expected) return false;
    dropped = std::move(reference_);
    return true;
  }

 private:
  class Hold {
   public:
    explicit Hold(std::atomic_flag& busy) : busy_(busy) {
      while (busy_.test_and_set(std::memory_order_acquire)) busy_.wait(true);
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() {
      busy_.clear(std::memory_order_release);
      busy_.notify_one();
    }

   private:
    std::atomic_flag& busy_;
  };

  mutable std::atomic_flag busy_;
  std::shared_ptr<T> reference_;  // under busy_
};
