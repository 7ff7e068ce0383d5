// The script instances of the plug-in, allocated in blocks and handed out again and again.
//
// Ownership: the pool owns every instance; none is destroyed before its block.
// Threads: Take and GiveBack may come from any thread; FreeBlocks and destruction from one, when no
//   script runs.
#pragma once

#include "host/mthread.h"
#include "plugin/epg_browser_mss.h"

// Invariants:
// 1. Every instance belongs to exactly one block and is either in use or on the free list.
// 2. The free list is last in, first out; a new block's instances enter it in their order.
class CInstancePool {
 public:
  static constexpr int kBlockInstances = 256;

  CInstancePool() = default;
  CInstancePool(const CInstancePool&) = delete;
  CInstancePool& operator=(const CInstancePool&) = delete;
  ~CInstancePool() { FreeBlocks(); }

  // Null when there is no memory for a block. [any]
  CEPGBrowser::MSS* Take();
  // REQUIRES: `instance` comes from this pool, is in use, unbound and without a module. [any]
  void GiveBack(CEPGBrowser::MSS* instance);

  // Destroys all instances, those in use too.
  void FreeBlocks();

 private:
  struct Instance final : CEPGBrowser::MSS {
    Instance* next_free = nullptr;
  };
  struct Block {
    Block* next = nullptr;
    Instance instances[kBlockInstances];
  };

  bool AddBlock();

  ORVANE::MUTEX mutex_;
  Block* blocks_ = nullptr;   // Owned. Under mutex_.
  Instance* free_ = nullptr;  // Under mutex_.
};
