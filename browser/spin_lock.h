// Holds a flag for the few instructions that it guards.
#pragma once

#include <atomic>
#include <thread>

class CSpinLock {
 public:
  explicit CSpinLock(std::atomic_flag& busy) : busy_(busy) {
    // Not a wait on the flag: on systems without such a wait some standard libraries miss its end.
    while (busy_.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
  }
  CSpinLock(const CSpinLock&) = delete;
  CSpinLock& operator=(const CSpinLock&) = delete;
  ~CSpinLock() { busy_.clear(std::memory_order_release); }

 private:
  std::atomic_flag& busy_;
};
