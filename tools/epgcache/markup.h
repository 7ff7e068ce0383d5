// The pieces of an XML text as XML has them, without a look at what they mean: for comparing with
// what the plug-in's reader makes of the same bytes.
//
// Ownership: everything is a view of the text.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace epgcache {

enum class MarkupKind { kStart, kEmpty, kEnd, kComment, kCData, kOther };

struct Markup {
  MarkupKind kind;
  std::size_t begin;      // of its '<'
  std::size_t end;        // behind its '>', or that of the text
  std::string_view name;  // of an element
};

// The next piece at or behind `at`; false when there is none.
bool FindMarkup(std::string_view text, std::size_t at, Markup& markup);

struct MarkupAttribute {
  std::string_view before;  // from the name or value before it
  std::string_view name;
  std::string_view equals;  // '=' and the blanks around it
  std::string_view value;   // as it stands between its quotes
};

std::vector<MarkupAttribute> AttributesOf(std::string_view text, const Markup& tag);

}  // namespace epgcache
