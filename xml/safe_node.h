// A node of a listings file, which owns the whole tree below it.
//
// Ownership: every child is a CSafeNode made with `new`, every attribute an ATTRIB made with `new`;
//   both are freed with the node. Freeing does not recurse, so nesting costs no stack.
// Threads: a tree belongs to the thread of its import.
#pragma once

#include <memory>

#include "host/mxml.h"

// A listings file is read as one small tree after the other, all below the same few nodes. So a
// node keeps some of the children and attributes that it frees, with the storage of their texts,
// and gives them out again: a programme of ten elements, which took thirty allocations, takes none.
class CSafeNode : public ORVANE::MXML::NODE {
 public:
  CSafeNode() = default;
  virtual ~CSafeNode();

  // An empty node for the tree below this one.
  std::unique_ptr<CSafeNode> MakeChild();
  // Takes back a node that was not linked into the tree.
  void TakeBack(std::unique_ptr<CSafeNode> child);
  // Adds an attribute without a value.
  ORVANE::MXML::ATTRIB& AddNewAttribute(std::string_view attribute_name);

  // Frees children and attributes; the node keeps its own name and value.
  void FreeChildren();

  void FreeAttributes() {
    if (first_attribute != nullptr) KeepSpareAttributes();
  }

 private:
  void KeepSpareAttributes();
};
