#include "xml/attribute_pool.h"

#include <cstddef>
#include <utility>

using ORVANE::MXML;

namespace {

// Limits that nearly no element reaches: a file's largest one must not stay in memory.
constexpr int kMostTakenBack = 64;
constexpr std::size_t kLongestKept = 4096;

bool IsSmall(const MXML::ATTRIB& attribute) {
  return attribute.name.length <= kLongestKept && attribute.value.length <= kLongestKept;
}

}  // namespace

CAttributePool::~CAttributePool() {
  while (first_ != nullptr) delete std::exchange(first_, first_->next);
}

std::unique_ptr<MXML::ATTRIB> CAttributePool::Take() {
  if (first_ == nullptr) return std::make_unique<MXML::ATTRIB>();
  MXML::ATTRIB* const attribute = std::exchange(first_, first_->next);
  attribute->next = nullptr;
  return std::unique_ptr<MXML::ATTRIB>(attribute);
}

void CAttributePool::TakeBack(MXML::NODE& node) {
  MXML::ATTRIB* const rest = first_;
  MXML::ATTRIB** end = &first_;  // where the next one is linked in
  for (int kept = 0; node.first_attribute != nullptr; ++kept) {
    std::unique_ptr<MXML::ATTRIB> attribute(
        std::exchange(node.first_attribute, node.first_attribute->next));
    if (kept >= kMostTakenBack || !IsSmall(*attribute)) continue;
    *end = attribute.release();
    end = &(*end)->next;
  }
  *end = rest;
}
