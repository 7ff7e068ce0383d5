// Attributes to be used again.
//
// A listings file is read as one small element after the other. The attributes of those that are
// done with wait here, with the storage of their texts, for the next ones.
//
// Ownership: the pool owns what waits in it. What it gives belongs to the caller.
// Threads: as a container's.
// Errors: std::bad_alloc.
#pragma once

#include <memory>

#include "host/mxml.h"

class CAttributePool {
 public:
  CAttributePool() = default;
  CAttributePool(const CAttributePool&) = delete;
  CAttributePool& operator=(const CAttributePool&) = delete;
  ~CAttributePool();

  // An attribute by itself. Name and value are those of its last use, to be overwritten.
  std::unique_ptr<ORVANE::MXML::ATTRIB> Take();

  // Takes a node's attributes back.
  void TakeBack(ORVANE::MXML::NODE& node);

 private:
  // In the order in which they were read, so that the next element, which is likely to have the
  // same attributes, finds the right names.
  ORVANE::MXML::ATTRIB* first_ = nullptr;  // Owned.
};
