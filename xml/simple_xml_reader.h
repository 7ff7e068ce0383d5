// The streaming reader of listings files: a small subset of XML, read one element at a time.
//
// It takes elements with attributes, text, self-closing tags, end tags and five named entities, and
// skips markup that opens with "<!" or "<?" up to the next '>'. It knows no CDATA, no numeric
// references and no encodings, and it neither normalises nor validates: bytes stay as they stand.
// Listings files are written for its habits, odd ones included; the comments in the source name
// them.
//
// Ownership: the caller owns the nodes it hands in, and with them the trees below. What it gives
//   back by `Recycle` waits in the reader to be used again.
// Threads: a reader belongs to the thread of its import. [loader]
// Errors: CBadAlloc and std::bad_alloc when memory runs out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/mstr.h"
#include "host/mstrm.h"
#include "xml/attribute_pool.h"
#include "xml/elements.h"
#include "xml/safe_node.h"

// The reader reads the stream ahead, in blocks, into a window of its own. So whoever seeks the
// stream itself goes on with ReadRoot, which begins again.
//
// A text under construction, a tag's or an element's, stands in the window too, where its bytes
// were read, and what is not part of it is closed up. There is never more than one: a tag's text is
// done with at its '>', an element's at the next '<'. Finished texts stay in front of it for as
// long as there are elements that view them.
//
// Invariants, of a window that has bytes:
// 1. window <= kept <= text_begin <= text_end <= next <= limit, all in the window.
// 2. Of the bytes before `next`, two are there, or as many as the stream has had.
// 3. Texts of elements stand in [kept, text_end) or are empty.
class CSimpleXMLReader final : public ORVANE::MSTRM {
 public:
  using Enter = bool(const CElement& element, ORVANE::MSTR& error);

  // Rewinds, and reads the document's first element that has child elements; markup before it is
  // read into the same node and overwritten. True: the next unit is that element's first child.
  // False: the stream ended first, or a tag was closed by another name; `more` then tells whether
  // there was markup after the last complete element, so that a walk has something to read.
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

  // Reads what is below an open element named `parent` in the same way, as views instead of nodes.
  // `enter` is asked before the children of an element are read; when it says no, which it gives
  // the reason for, the call fails.
  bool ReadChildren(const ORVANE::MSTR& parent, ORVANE::MSTR& error, Enter* enter = nullptr);
  // What that call has read. Empty as soon as the reader has read anything else.
  CElementRange Children() const { return {elements_.data(), elements_.data() + elements_.size()}; }

  // ReadElement as a view, with ReadRecordChildren for what is below it.
  bool ReadRecord(bool& open, bool& end_tag);
  bool ReadRecordChildren(ORVANE::MSTR& error);
  // What they have read. REQUIRES: the reader has read nothing else since.
  const CElement& Record() const { return elements_.front(); }
  // Its name; for one that is so broken that it has no tag, the name of the last record with one
  // since ReadRoot.
  std::string_view RecordName() const { return record_name_; }

  // Frees children and attributes of a node that this reader has filled, for later ones; the node
  // keeps its own name and value.
  void Recycle(CSafeNode& node) {
    attributes_.TakeBack(node);
    node.FreeChildren();
  }

  // Where the next unit begins to be read, in bytes from the stream's start.
  std::int64_t Offset() const { return limit_offset_ - (limit_ - next_); }

 private:
  class COpenPath;
  struct Unit {
    bool open;
    bool end_tag;
    bool markup;  // a '<' was met
    bool parsed;  // it has a tag
    bool valued;  // it has a value, which may be empty
  };
  // An open element, and the last of its children so far.
  struct Level {
    CSafeNode* node;
    ORVANE::MXML::NODE* last_child;
  };

  bool ReadUsualUnit(CElement& element, Unit& unit);
  bool ReadUnit(Unit& unit);
  bool ReadUnit(CSafeNode& node, Unit& unit);
  bool ReadBelow(std::string_view parent, ORVANE::MSTR& error, Enter* enter);
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
  void MoveKept(char* to);

  void BeginText() { text_begin_ = text_end_ = next_; }
  void AddToText(const char* begin, const char* end);
  void AddToText(char c) { *text_end_++ = c; }
  std::string_view Text() const {
    return {text_begin_, static_cast<std::size_t>(text_end_ - text_begin_)};
  }

  std::unique_ptr<char[]> window_;
  std::size_t window_bytes_ = 0;
  char* kept_ = nullptr;
  char* text_begin_ = nullptr;
  char* text_end_ = nullptr;
  char* next_ = nullptr;           // the next byte to read
  char* limit_ = nullptr;          // after the last byte held
  std::int64_t limit_offset_ = 0;  // the stream's offset at `limit_`

  CAttributePool attributes_;
  std::vector<Level> levels_;       // of trees, innermost last: depth costs heap, not stack
  std::vector<CElement> elements_;  // the one that is being read last
  std::vector<std::size_t> open_;   // those of them that are open
  std::string record_name_;
};

// True when an end tag was read and bears the expected name; otherwise `error` says what is wrong.
bool CheckEndTag(bool end_tag, std::string_view expected, std::string_view found,
                 ORVANE::MSTR& error);
