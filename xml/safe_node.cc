#include "xml/safe_node.h"

#include <utility>

CSafeNode::~CSafeNode() { FreeChildren(); }

void CSafeNode::FreeAttributes() {
  while (first_attribute != nullptr) {
    delete std::exchange(first_attribute, first_attribute->next);
  }
  last_attribute = nullptr;
}

void CSafeNode::FreeChildren() {
  // A child's own children move up to stand behind it before it goes, so that its destructor finds
  // none: a tree of any depth is freed in one loop.
  while (first_child != nullptr) {
    auto* const child = static_cast<CSafeNode*>(first_child);
    if (child->first_child != nullptr) {
      child->last_child->next_sibling = child->next_sibling;
      child->next_sibling = std::exchange(child->first_child, nullptr);
      child->last_child = nullptr;
    }
    first_child = child->next_sibling;
    delete child;
  }
  last_child = nullptr;
  FreeAttributes();
}
