#include "xml/simple_xml_reader.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "text/entities.h"
#include "text/letters.h"
#include "xml/work_text.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

bool IsQuote(char c) { return c == '"' || c == '\''; }

// The name between '&' and ';'. However long it gets, only names of up to four bytes mean
// something, so no more than five are kept.
class CEntityName {
 public:
  void Add(char c) {
    if (length_ < sizeof name_) name_[length_++] = LowerLetter(c);
  }
  // '\0' for a name that means nothing.
  char Decode() const { return EntityCharacter({name_, length_}); }

 private:
  char name_[5] = {};
  std::size_t length_ = 0;
};

constexpr std::array<bool, 256> TableOf(std::string_view characters) {
  std::array<bool, 256> table = {};
  for (const char c : characters) table[static_cast<unsigned char>(c)] = true;
  return table;
}

// The bytes that decide something outside a tag, and inside one.
constexpr auto kTextStops = TableOf("&<");
constexpr auto kTagStops = TableOf("\"'&/<>");
// And in a tag's text.
constexpr auto kTokenStops = TableOf("\"' =");

}  // namespace

// The next byte; kEnd at the end of the file.
inline int CSimpleXMLReader::ReadOne() {
  unsigned char byte;
  return Read(&byte, 1) == 1 ? byte : kEnd;
}

// Reads the rest of an entity, behind its '&': gives the character, '\0' for a name that means
// nothing. One that no ';' follows swallows markup too, to the end of the file, and gives kEnd.
int CSimpleXMLReader::ReadEntity() {
  CEntityName name;
  for (int c = ReadOne(); c != kEnd; c = ReadOne()) {
    if (c == ';') return name.Decode();
    name.Add(static_cast<char>(c));
  }
  return kEnd;
}

// Reads up to the next of the `stops` and gives it, or kEnd; adds what goes by to `text`, if there
// is one.
//
// Nearly every byte of a file goes through the inner loop. There is nothing in it that could touch
// the stream but the reading of a byte, so its position stays in a register, and what has gone by
// is copied at once.
template <typename Text>
inline int CSimpleXMLReader::PassBy(const std::array<bool, 256>& stops, Text* text) {
  for (;;) {
    const char* const begin = Cursor();
    while (HasByte()) {
      const int c = ReadOne();
      if (stops[static_cast<unsigned char>(c)]) {
        if (text != nullptr) text->Add({begin, Cursor() - 1});
        return c;
      }
    }
    if (text != nullptr) text->Add({begin, Cursor()});
    const int c = ReadOne();  // the first of the next window
    if (c == kEnd || stops[static_cast<unsigned char>(c)]) return c;
    if (text != nullptr) text->Add(static_cast<char>(c));
  }
}

bool CSimpleXMLReader::ReadUnit(CSafeNode& node, bool& open, bool& end_tag, bool& markup) {
  open = true;
  end_tag = false;
  markup = false;
  CWorkText<512> tag;
  CWorkText<1024> content;
  std::size_t brackets = 0;  // '<' met in this call
  bool skipping = false;
  bool in_quotes = false;  // one flag for both kinds; a '>' does not clear it
  bool is_end_tag = false;
  bool start_parsed = false;

  for (;;) {
    // Outside a tag. Only what stands between the first '<' of a call and the second can become
    // the value.
    const auto text = brackets == 1 ? &content : nullptr;
    int c = PassBy(kTextStops, text);
    if (c == kEnd) return false;
    if (c == '&') {
      c = ReadEntity();
      if (c == kEnd) return false;
      if (text != nullptr && c != '\0') text->Add(static_cast<char>(c));
      continue;
    }

    // In a tag, from its '<' to the next '>'.
    while (c != '>') {
      if (c == '<') {
        markup = true;
        if (brackets == 1) node.value = content.View();
        ++brackets;
        content.Clear();
        c = ReadOne();
        if (c == kEnd) return false;
        if (c == '/') {
          is_end_tag = true;
        } else if (c == '!' || c == '?') {
          skipping = true;
          open = false;
        } else if (brackets > 1) {
          // Another element begins: the next call shall read its '<' again.
          return Seek(-2, SEEK::Current);
        }
        // The byte belongs to the tag as well.
        if (kTagStops[static_cast<unsigned char>(c)]) continue;
        if (!skipping) tag.Add(static_cast<char>(c));
      } else if (c == '&') {
        c = ReadEntity();
        if (c == kEnd) return false;
        if (!skipping && c != '\0') tag.Add(static_cast<char>(c));
      } else if (c == '/') {
        if (in_quotes) {
          tag.Add('/');
        } else {
          open = false;  // wherever in the tag it stands
        }
      } else if (!skipping) {
        in_quotes = !in_quotes;
        tag.Add(static_cast<char>(c));
      }
      c = PassBy(kTagStops, skipping ? nullptr : &tag);
      if (c == kEnd) return false;
    }
    if (!start_parsed) {
      ParseTag(node, tag.View());
      tag.Clear();
      start_parsed = true;
      if (is_end_tag) end_tag = true;
    } else if (!(node.name == tag.View())) {
      return false;
    }
    if (!open) return true;
  }
}

bool CSimpleXMLReader::ReadElement(CSafeNode& node, bool& open, bool& end_tag) {
  bool markup = false;
  return ReadUnit(node, open, end_tag, markup);
}

bool CSimpleXMLReader::ReadRoot(CSafeNode& root, bool& more) {
  Seek(0, SEEK::Start);
  bool open = false;
  bool end_tag = false;
  while (ReadUnit(root, open, end_tag, more)) {
    if (open) return true;
  }
  return false;
}

namespace {

// The open elements below a parent, from the innermost up: depth costs heap, not stack. They are
// linked into the tree as they are closed; what is still open at the end goes with the path.
class COpenPath {
 public:
  explicit COpenPath(CSafeNode& parent) : parent_(parent), innermost_(&parent) {}
  COpenPath(const COpenPath&) = delete;
  COpenPath& operator=(const COpenPath&) = delete;
  ~COpenPath() {
    while (!IsAtParent()) delete Leave();
  }

  CSafeNode& Innermost() { return *innermost_; }
  bool IsAtParent() const { return innermost_ == &parent_; }

  void Enter(std::unique_ptr<CSafeNode> node) {
    node->next_sibling = innermost_;  // it has no sibling yet
    innermost_ = node.release();
  }

  // Closes the innermost element.
  void Close() {
    CSafeNode* const closed = Leave();
    innermost_->AddNode(closed);
  }

 private:
  CSafeNode* Leave() {
    CSafeNode* const outer = static_cast<CSafeNode*>(innermost_->next_sibling);
    innermost_->next_sibling = nullptr;
    return std::exchange(innermost_, outer);
  }

  CSafeNode& parent_;
  CSafeNode* innermost_;  // Owned, with those above it, below the parent.
};

}  // namespace

bool CSimpleXMLReader::ReadChildren(CSafeNode& parent, MSTR& error) {
  COpenPath path(parent);
  for (;;) {
    auto node = parent.MakeChild();
    bool open = false;
    bool end_tag = false;
    if (!ReadElement(*node, open, end_tag) || end_tag) {
      if (!CheckEndTag(end_tag, path.Innermost().name, node->name, error)) return false;
      parent.TakeBack(std::move(node));
      if (path.IsAtParent()) return true;
      path.Close();
    } else if (open) {
      path.Enter(std::move(node));
    } else {
      path.Innermost().AddNode(node.release());
    }
  }
}

namespace {

// Cuts a tag's text at blanks and '=' outside quotes.
class CTokens {
 public:
  explicit CTokens(std::string_view tag) : next_(tag.data()), end_(tag.data() + tag.size()) {}

  bool AtEnd() const { return at_end_; }

  // The next token, with the number of quotes in it. There is always one more than there are cuts:
  // a second blank, or one before the end, makes an empty token.
  std::string_view Next(std::size_t& quotes) {
    const char* const begin = next_;
    quotes = 0;
    for (;;) {
      while (next_ != end_ && !kTokenStops[static_cast<unsigned char>(*next_)]) ++next_;
      if (next_ == end_ || !IsQuote(*next_)) break;
      do {
        ++next_;
      } while (next_ != end_ && !IsQuote(*next_));
      ++quotes;
      if (next_ == end_) break;
      ++quotes;
      ++next_;
    }
    const std::string_view token(begin, static_cast<std::size_t>(next_ - begin));
    at_end_ = next_ == end_;
    if (!at_end_) ++next_;
    return token;
  }

 private:
  const char* next_;
  const char* const end_;
  bool at_end_ = false;
};

// An attribute's value is its token without any quotes, interior ones too.
void SetValue(MXML::ATTRIB& attribute, std::string_view token, std::size_t quotes) {
  if (quotes == 2 && IsQuote(token.front()) && IsQuote(token.back())) {
    attribute.value = token.substr(1, token.size() - 2);
    return;
  }
  CWorkText<256> unquoted;
  for (const char c : token) {
    if (!IsQuote(c)) unquoted.Add(c);
  }
  attribute.value = unquoted.View();
}

}  // namespace

bool CSimpleXMLReader::ParseTag(CSafeNode& node, std::string_view tag) {
  node.FreeAttributes();
  CTokens tokens(tag);
  std::size_t quotes = 0;
  node.name = tokens.Next(quotes);
  // Names and values alternate; blanks around '=' therefore part a value from its name.
  while (!tokens.AtEnd()) {
    MXML::ATTRIB& attribute = node.AddNewAttribute(tokens.Next(quotes));
    if (tokens.AtEnd()) break;
    const std::string_view value = tokens.Next(quotes);
    SetValue(attribute, value, quotes);
  }
  return true;
}

bool CheckEndTag(bool end_tag, const MSTR& expected, const MSTR& found, MSTR& error) {
  if (!end_tag) {
    error = "Premature end of file.";
    return false;
  }
  if (!(expected == found)) {
    error.Format("<%s> end tag is bad, found <%s>.", expected.Text(), found.Text());
    return false;
  }
  return true;
}
