#include "xml/safe_node.h"

#include <utility>

#include "text/counted_text.h"

using ORVANE::MXML;

CSafeNode* UnlinkFirst(MXML::NODE*& first) {
  auto* const node = static_cast<CSafeNode*>(first);
  if (node->first_child != nullptr) {
    MXML::NODE* last = node->first_child;
    while (last->next_sibling != nullptr) last = last->next_sibling;
    last->next_sibling = node->next_sibling;
    node->next_sibling = std::exchange(node->first_child, nullptr);
  }
  first = std::exchange(node->next_sibling, nullptr);
  return node;
}

CSafeNode::~CSafeNode() { FreeChildren(); }

void CSafeNode::FreeChildren() {
  while (first_child != nullptr) delete UnlinkFirst(first_child);
  while (first_attribute != nullptr) {
    delete std::exchange(first_attribute, first_attribute->next);
  }
}

const MXML::ATTRIB* FindAttribute(const MXML::NODE& node, std::string_view name) {
  const MXML::ATTRIB* attribute = node.first_attribute;
  while (attribute != nullptr && ViewOf(attribute->name) != name) attribute = attribute->next;
  return attribute;
}

std::string_view AttributeValue(const MXML::NODE& node, std::string_view name) {
  const MXML::ATTRIB* const attribute = FindAttribute(node, name);
  return attribute != nullptr ? ViewOf(attribute->value) : std::string_view("");
}
