#include "xml/node_pool.h"

#include <cstddef>
#include <utility>

using ORVANE::MXML;

namespace {

// Limits that nearly no record reaches: a file's largest record must not stay in memory.
constexpr int kMostTakenBack = 64;
constexpr std::size_t kLongestKept = 4096;

template <typename Part>
bool IsSmall(const Part& part) {
  return part.name.length <= kLongestKept && part.value.length <= kLongestKept;
}

void DeleteList(MXML::ATTRIB* first) {
  while (first != nullptr) delete std::exchange(first, first->next);
}

}  // namespace

CNodePool::~CNodePool() {
  while (nodes_ != nullptr) delete UnlinkFirst(nodes_);
  DeleteList(attributes_);
}

std::unique_ptr<CSafeNode> CNodePool::TakeNode() {
  return nodes_ != nullptr ? std::unique_ptr<CSafeNode>(UnlinkFirst(nodes_))
                           : std::make_unique<CSafeNode>();
}

std::unique_ptr<MXML::ATTRIB> CNodePool::TakeAttribute() {
  if (attributes_ == nullptr) return std::make_unique<MXML::ATTRIB>();
  MXML::ATTRIB* const attribute = std::exchange(attributes_, attributes_->next);
  attribute->next = nullptr;
  return std::unique_ptr<MXML::ATTRIB>(attribute);
}

void CNodePool::TakeBackChildren(CSafeNode& parent) {
  MXML::NODE* const rest = nodes_;
  MXML::NODE** end = &nodes_;  // where the next one is linked in
  for (int kept = 0; parent.first_child != nullptr; ++kept) {
    std::unique_ptr<CSafeNode> node(UnlinkFirst(parent.first_child));
    if (kept >= kMostTakenBack || !IsSmall(*node)) continue;
    TakeBackAttributes(*node);
    *end = node.release();
    end = &(*end)->next_sibling;
  }
  *end = rest;
}

void CNodePool::TakeBackAttributes(CSafeNode& node) {
  MXML::ATTRIB* const rest = attributes_;
  MXML::ATTRIB** end = &attributes_;
  for (int kept = 0; node.first_attribute != nullptr; ++kept) {
    std::unique_ptr<MXML::ATTRIB> attribute(
        std::exchange(node.first_attribute, node.first_attribute->next));
    if (kept >= kMostTakenBack || !IsSmall(*attribute)) continue;
    *end = attribute.release();
    end = &(*end)->next;
  }
  *end = rest;
}

void CNodePool::TakeBack(std::unique_ptr<CSafeNode> node) {
  TakeBackChildren(*node);
  TakeBackAttributes(*node);
  if (!IsSmall(*node)) return;
  node->next_sibling = nodes_;
  nodes_ = node.release();
}
