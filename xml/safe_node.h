// A node of a listings file, which owns the whole tree below it.
//
// Ownership: every child is a CSafeNode made with `new`, every attribute an ATTRIB made with `new`;
//   both are freed with the node. Freeing does not recurse, so nesting costs no stack.
// Threads: a tree belongs to the thread of its import.
#pragma once

#include "host/mxml.h"

class CSafeNode : public ORVANE::MXML::NODE {
 public:
  CSafeNode() = default;
  virtual ~CSafeNode();

  // Frees children and attributes; the node keeps its own name and value.
  void FreeChildren();

  void FreeAttributes();
};
