// Nodes and attributes to be used again.
//
// A listings file is read as one small tree after the other. Those of a finished tree wait here,
// with the storage of their texts, for the next one: a programme of ten elements used to take
// thirty allocations and now takes none.
//
// Ownership: the pool owns what waits in it. What it gives belongs to the caller.
// Threads: as a container's.
// Errors: std::bad_alloc.
#pragma once

#include <memory>

#include "xml/safe_node.h"

class CNodePool {
 public:
  CNodePool() = default;
  CNodePool(const CNodePool&) = delete;
  CNodePool& operator=(const CNodePool&) = delete;
  ~CNodePool();

  // A node without children and attributes, or an attribute by itself. Name and value are those of
  // its last use, to be overwritten.
  std::unique_ptr<CSafeNode> TakeNode();
  std::unique_ptr<ORVANE::MXML::ATTRIB> TakeAttribute();

  // Takes back the tree below a node. The node keeps its own name and value.
  void TakeBackChildren(CSafeNode& parent);
  void TakeBackAttributes(CSafeNode& node);
  void TakeBack(std::unique_ptr<CSafeNode> node);

 private:
  // In the order in which they were read, so that the next tree, which is likely to have the same
  // elements, finds nodes that have the right names.
  ORVANE::MXML::NODE* nodes_ = nullptr;         // Owned.
  ORVANE::MXML::ATTRIB* attributes_ = nullptr;  // Owned.
};
