// A node of a listings file, which owns the whole tree below it.
//
// Ownership: every child is a CSafeNode made with `new`, every attribute an ATTRIB made with `new`;
//   both are freed with the node. Freeing does not recurse, so nesting costs no stack.
// Threads: a tree belongs to the thread of its import.
#pragma once

#include <string_view>

#include "host/mxml.h"

class CSafeNode : public ORVANE::MXML::NODE {
 public:
  CSafeNode() = default;
  virtual ~CSafeNode();

  // Frees children and attributes; the node keeps its own name and value.
  void FreeChildren();
};

// The first attribute of that name; null when there is none.
const ORVANE::MXML::ATTRIB* FindAttribute(const ORVANE::MXML::NODE& node, std::string_view name);

// Its value, empty when there is none. The view lives until the node is changed; a NUL follows it.
std::string_view AttributeValue(const ORVANE::MXML::NODE& node, std::string_view name);

// Unlinks the first of a list of nodes, all of them CSafeNode, and gives it. Its own children take
// its place, so that a tree is taken apart in document order in one loop, however deep it is.
CSafeNode* UnlinkFirst(ORVANE::MXML::NODE*& first);
