// The pieces of an XML text as XML has them, without a look at what they mean: for mending what is
// not well-formed, and for comparing with what the plug-in's reader makes of the same bytes.
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
  std::size_t end;        // after its '>', or where it breaks off
  bool is_whole;          // it does not break off
  std::string_view name;  // of an element

  bool IsElement() const { return kind == MarkupKind::kStart || kind == MarkupKind::kEmpty; }
};

// The next piece at or after `at`; false when there is none.
bool FindMarkup(std::string_view text, std::size_t at, Markup& markup);

// The first element; false when there is none.
bool FindRoot(std::string_view text, Markup& root);

struct TagAttribute {
  std::string_view before;  // from the name or value before it
  std::string_view name;
  std::string_view equals;  // '=' and the blanks around it
  std::string_view value;   // as it stands between its quotes
};

struct TagParts {
  std::vector<TagAttribute> attributes;
  std::string_view rest;  // from after the last of them, with the '>'

  // Null when there is none.
  const TagAttribute* Find(std::string_view name) const;
};

TagParts PartsOf(std::string_view text, const Markup& tag);

// A reference that is longer, from its '&' to its ';', is none.
inline constexpr std::size_t kLongestReference = 41;

// What stands between the '&' at the beginning of a text and its ';'; empty when that '&' begins no
// reference.
std::string_view ReferenceAt(std::string_view text);

// Where the first '&' stands that begins no reference; npos when there is none.
std::size_t FindBareAmpersand(std::string_view text);

}  // namespace epgcache
