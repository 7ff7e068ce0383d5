// Holds a flag for the few instructions that it guards.
#pragma once

#include <atomic>

class CSpinLock {
 public:
  explicit CSpinLock(std::atomic_flag& busy) : busy_(busy) {
    while (busy_.test_and_set(std::memory_order_acquire)) busy_.wait(true);
  }
  CSpinLock(const CSpinLock&) = delete;
  CSpinLock& operator=(const CSpinLock&) = delete;
  ~CSpinLock() {
    busy_.clear(std::memory_order_release);
    busy_.notify_one();
  }

 private:
  std::atomic_flag& busy_;
};
