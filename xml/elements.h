// Elements of a listings file, as views of what was read.
//
// An importer looks at most elements once and keeps copies of a few texts. So a record's elements
// are no tree of nodes with texts of their own: they stand in one list in document order, each in
// front of all elements below it, and their texts stand where the reader read them.
//
// Ownership: elements and texts are the reader's that made them, until it reads on.
// Threads: the import's. [loader]
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

struct CElement {
  std::string_view tag;  // what stands between '<' and '>'
  std::string_view name;
  std::string_view value;
  std::size_t count = 1;  // of elements: this one and all below it
};

// Elements of one parent.
class CElementRange {
 public:
  class CIterator {
   public:
    explicit CIterator(const CElement* at) : at_(at) {}
    const CElement& operator*() const { return *at_; }
    CIterator& operator++() {
      at_ += at_->count;
      return *this;
    }
    bool operator==(const CIterator&) const = default;

   private:
    const CElement* at_;
  };

  // What stands in [begin, end).
  CElementRange(const CElement* begin, const CElement* end) : begin_(begin), end_(end) {}

  CIterator begin() const { return CIterator(begin_); }
  CIterator end() const { return CIterator(end_); }

 private:
  const CElement* begin_;
  const CElement* end_;
};

inline CElementRange ChildrenOf(const CElement& element) {
  return {&element + 1, &element + element.count};
}

// Sets values to those of an element's first attributes of these names; empty where there is none.
// REQUIRES: as many values as names, 32 at most.
void ReadAttributes(const CElement& element, std::span<const std::string_view> names,
                    std::span<std::string> values);
// One such value.
std::string AttributeValue(const CElement& element, std::string_view name);
