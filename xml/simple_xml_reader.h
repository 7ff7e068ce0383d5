// The streaming reader of listings files: a small subset of XML, read one element at a time.
//
// It takes elements with attributes, text, self-closing tags, end tags and five named entities, and
// skips markup that opens with "<!" or "<?" up to the next '>'. It knows no CDATA, no numeric
// references and no encodings, and it neither normalises nor validates: bytes stay as they stand.
// Listings files are written for its habits, odd ones included; the comments in the source name
// them.
//
// Ownership: the caller owns the nodes it hands in, and with them the trees below.
// Threads: a reader belongs to the thread of its import.
// Errors: MBADALLOC and std::bad_alloc when memory runs out.
#pragma once

#include <array>
#include <string_view>

#include "host/mstr.h"
#include "host/mstrm.h"
#include "xml/safe_node.h"

// Final, so that the byte-wise `Read` of the stream is resolved and inlined.
class CSimpleXMLReader final : public ORVANE::MSTRM {
 public:
  // Rewinds, and reads the document's first element that has child elements; markup before it is
  // read into the same node and overwritten. True: the stream stands at that element's first child.
  // False: the stream ended first, or a tag was closed by another name; `more` then tells whether
  // there was markup behind the last complete element, so that a walk has something to meet.
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

  // Sets the node's name and attributes from what stands between '<' and '>'.
  static bool ParseTag(CSafeNode& node, std::string_view tag);

 private:
  bool ReadUnit(CSafeNode& node, bool& open, bool& end_tag, bool& markup);

  static constexpr int kEnd = -1;  // instead of a byte
  int ReadOne();
  int ReadEntity();
  template <typename Text>
  int PassBy(const std::array<bool, 256>& stops, Text* text);
};

// True when an end tag was read and bears the expected name; otherwise `error` says what is wrong.
bool CheckEndTag(bool end_tag, const ORVANE::MSTR& expected, const ORVANE::MSTR& found,
                 ORVANE::MSTR& error);
