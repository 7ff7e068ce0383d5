// The streaming reader of listings files: a small subset of XML, read one element at a time.
//
// It takes elements with attributes, text, self-closing tags, end tags and five named entities, and
// skips markup that opens with "<!" or "<?" up to the next '>'. It knows no CDATA, no numeric
// references and no encodings, and it neither normalises nor validates: bytes stay as they stand.
// Listings files are written for its habits, odd ones included; the comments in the source name
// them.
//
// Ownership: the caller owns the nodes it hands in, and with them the trees below. What it gives
//   back by `Recycle` and `TakeBack` waits in the reader to be used again.
// Threads: a reader belongs to the thread of its import. [loader]
// Errors: CBadAlloc and std::bad_alloc when memory runs out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "host/mstr.h"
#include "host/mstrm.h"
#include "xml/node_pool.h"
#include "xml/safe_node.h"

// The reader reads the stream ahead, in blocks, into a window of its own. So whoever seeks the
// stream itself goes on with ReadRoot, which begins again.
//
// A text under construction, a tag's or an element's, stands in the window too, where its bytes
// were read, and what is no part of it is closed up. There is never more than one: a tag's text is
// done with at its '>', an element's at the next '<'.
//
// Invariants, of a window that has bytes:
// 1. window <= text_begin <= text_end <= next <= limit, all in the window.
// 2. Of the bytes before `next`, two are there, or as many as the stream has had.
class CSimpleXMLReader final : public ORVANE::MSTRM {
 public:
  // Rewinds, and reads the document's first element that has child elements; markup before it is
  // read into the same node and overwritten. True: the next unit is that element's first child.
  // False: the stream ended first, or a tag was closed by another name; `more` then tells whether
  // there was markup behind the last complete element, so that a walk has something to read.
  bool ReadRoot(CSafeNode& root, bool& more);
  bool ReadRoot(CSafeNode& root) {
    bool more = false;
    return ReadRoot(root, more);
  }

  // Reads the next unit of markup: an element's start tag and text, a self-closing element, an
  // element that holds only text, an end tag, or skipped markup (as a nameless node).
  //
  // `open`: the element's children follow. `end_tag`: the unit is an end tag. False when the stream
  // ends first, or a text-only element is closed by another name or interrupted by a comment.
  bool ReadElement(CSafeNode& node, bool& open, bool& end_tag);

  // Reads every element below an open `parent` up to and including its end tag. On failure `error`
  // holds the reason, and `parent` the children that were complete.
  bool ReadChildren(CSafeNode& parent, ORVANE::MSTR& error);

  // Sets the node's name and attributes from what stands between '<' and '>'. Always true.
  bool ParseTag(CSafeNode& node, std::string_view tag);

  // A node for ReadNewElement, without children and attributes.
  std::unique_ptr<CSafeNode> NewNode() { return pool_.TakeNode(); }
  // ReadElement into a node by NewNode, which may hold the name and value of an earlier element:
  // what the unit has none of is empty afterwards.
  bool ReadNewElement(CSafeNode& node, bool& open, bool& end_tag);
  void TakeBack(std::unique_ptr<CSafeNode> node) { pool_.TakeBack(std::move(node)); }

  // Frees children and attributes of a node that this reader has filled, for later ones; the node
  // keeps its own name and value.
  void Recycle(CSafeNode& node) {
    pool_.TakeBackChildren(node);
    pool_.TakeBackAttributes(node);
  }

  // Where the next unit begins to be read, in bytes from the stream's start.
  std::int64_t Offset() const { return limit_offset_ - (limit_ - next_); }

 private:
  class COpenPath;
  struct Unit {
    bool open;
    bool end_tag;
    bool markup;  // a '<' was met
    bool parsed;  // the node's name was set
    bool valued;  // the node's value was set
  };
  // An open element, and the last of its children so far.
  struct Level {
    CSafeNode* node;
    ORVANE::MXML::NODE* last_child;
  };

  bool ReadUnit(CSafeNode& node, Unit& unit);
  void CutTag(CSafeNode& node, char* begin, char* end);

  static constexpr int kEnd = -1;  // instead of a byte
  int ReadOne() {
    if (next_ == limit_ && !Refill()) return kEnd;
    return static_cast<unsigned char>(*next_++);
  }
  int ReadEntity();
  template <typename Marks>
  int PassBy(bool keep);
  bool Refill();

  void BeginText() { text_begin_ = text_end_ = next_; }
  void AddToText(const char* begin, const char* end);
  void AddToText(char c) { *text_end_++ = c; }
  std::string_view Text() const {
    return {text_begin_, static_cast<std::size_t>(text_end_ - text_begin_)};
  }

  std::unique_ptr<char[]> window_;
  std::size_t window_bytes_ = 0;
  char* text_begin_ = nullptr;
  char* text_end_ = nullptr;
  char* next_ = nullptr;           // the next byte to read
  char* limit_ = nullptr;          // behind the last byte held
  std::int64_t limit_offset_ = 0;  // the stream's offset at `limit_`

  CNodePool pool_;
  std::vector<Level> open_;  // of ReadChildren, innermost last: depth costs heap, not stack
};

// True when an end tag was read and bears the expected name; otherwise `error` says what is wrong.
bool CheckEndTag(bool end_tag, const ORVANE::MSTR& expected, const ORVANE::MSTR& found,
                 ORVANE::MSTR& error);
