#include "xml/safe_node.h"

#include <utility>

using ORVANE::MXML;

namespace {

// More than nearly every record has; a file's largest one must not stay in memory.
constexpr int kMostSpareChildren = 64;
constexpr int kMostSpareAttributes = 16;

void DeleteAttributes(MXML::ATTRIB*& first) {
  while (first != nullptr) delete std::exchange(first, first->next);
}

// The first of a list of children, unlinked. Its own children move up to stand behind it, so that
// a tree of any depth is taken apart in one loop.
CSafeNode* Unlink(MXML::NODE*& first) {
  auto* const node = static_cast<CSafeNode*>(first);
  if (node->first_child != nullptr) {
    node->last_child->next_sibling = node->next_sibling;
    node->next_sibling = std::exchange(node->first_child, nullptr);
    node->last_child = nullptr;
  }
  first = std::exchange(node->next_sibling, nullptr);
  return node;
}

}  // namespace

CSafeNode::~CSafeNode() {
  while (first_child != nullptr) delete Unlink(first_child);
  while (spare_child != nullptr) delete Unlink(spare_child);
  DeleteAttributes(first_attribute);
  DeleteAttributes(spare_attribute);
}

std::unique_ptr<CSafeNode> CSafeNode::MakeChild() {
  if (spare_child == nullptr) return std::make_unique<CSafeNode>();
  return std::unique_ptr<CSafeNode>(Unlink(spare_child));
}

void CSafeNode::TakeBack(std::unique_ptr<CSafeNode> child) {
  child->name.Reset();
  child->value.Reset();
  child->FreeAttributes();
  child->next_sibling = spare_child;
  spare_child = child.release();
}

MXML::ATTRIB& CSafeNode::AddNewAttribute(std::string_view attribute_name) {
  std::unique_ptr<MXML::ATTRIB> attribute(spare_attribute);
  if (attribute != nullptr) {
    spare_attribute = std::exchange(attribute->next, nullptr);
  } else {
    attribute = std::make_unique<MXML::ATTRIB>();
  }
  attribute->name = attribute_name;
  AddAttribute(attribute.get());
  return *attribute.release();
}

void CSafeNode::KeepSpareAttributes() {
  for (int kept = 0; first_attribute != nullptr && kept < kMostSpareAttributes; ++kept) {
    MXML::ATTRIB* const attribute = std::exchange(first_attribute, first_attribute->next);
    attribute->name.Reset();
    attribute->value.Reset();
    attribute->next = std::exchange(spare_attribute, attribute);
  }
  DeleteAttributes(first_attribute);
}

void CSafeNode::FreeChildren() {
  for (int kept = 0; first_child != nullptr && kept < kMostSpareChildren; ++kept) {
    TakeBack(std::unique_ptr<CSafeNode>(Unlink(first_child)));
  }
  while (first_child != nullptr) delete Unlink(first_child);
  last_child = nullptr;
  FreeAttributes();
}
