#include "xml/simple_xml_reader.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "xml/work_text.h"

using ORVANE::MSTR;

namespace {

bool IsQuote(char c) { return c == '"' || c == '\''; }

// The name between '&' and ';'. However long it gets, only names of up to four bytes mean
// something, so no more than five are kept.
class CEntityName {
 public:
  void Clear() { length_ = 0; }
  void Add(char c) {
    if (length_ < sizeof name_) name_[length_++] = Lower(c);
  }
  // '\0' for a name that means nothing.
  char Decode() const {
    static constexpr struct {
      std::string_view name;
      char character;
    } kEntities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& entity : kEntities) {
      if (entity.name == std::string_view(name_, length_)) return entity.character;
    }
    return '\0';
  }

 private:
  static char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

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

}  // namespace

// The next byte; false at the end of the file.
inline bool CSimpleXMLReader::ReadOne(char& c) {
  char byte;
  if (Read(&byte, 1) == 1) [[likely]] {
    c = byte;
    return true;
  }
  return false;
}

// Reads up to the next of the `stops`, and adds what goes by to `text`, if there is one. False at
// the end of the file.
//
// Nearly every byte of a file goes through this loop. Its state is all in locals, so that a byte
// costs a look-up and no trip to memory and back.
template <typename Text>
inline bool CSimpleXMLReader::PassBy(const std::array<bool, 256>& stops, Text* text, char& stop) {
  char c = 0;
  if (text == nullptr) {
    do {
      if (!ReadOne(c)) return false;
    } while (!stops[static_cast<unsigned char>(c)]);
  } else {
    typename Text::CWriter writer(*text);
    for (;;) {
      if (!ReadOne(c)) return false;
      if (stops[static_cast<unsigned char>(c)]) break;
      writer.Add(c);
    }
  }
  stop = c;
  return true;
}

bool CSimpleXMLReader::ReadUnit(CSafeNode& node, bool& open, bool& end_tag, bool& markup) {
  open = true;
  end_tag = false;
  markup = false;
  CWorkText<512> tag;
  CWorkText<1024> content;
  CEntityName entity;
  std::size_t brackets = 0;  // '<' met in this call
  bool in_tag = false;
  bool skipping = false;
  bool in_quotes = false;  // one flag for both kinds; a '>' does not clear it
  bool is_end_tag = false;
  bool start_parsed = false;

  // Only what stands between the first '<' of a call and the second can become the value.
  const auto add = [&](char c) {
    if (!in_tag) {
      if (brackets == 1) content.Add(c);
    } else if (!skipping) {
      tag.Add(c);
    }
  };

  char c = 0;
  bool pending = false;  // `c` has been read and not been looked at
  for (;;) {
    if (!pending) {
      const bool more = in_tag ? PassBy(kTagStops, skipping ? nullptr : &tag, c)
                               : PassBy(kTextStops, brackets == 1 ? &content : nullptr, c);
      if (!more) return false;
    }
    pending = false;
    switch (c) {
      case '"':
      case '\'':
        if (in_tag && !skipping) in_quotes = !in_quotes;
        add(c);
        break;
      case '&':
        // One that no ';' follows swallows markup too, to the end of the file.
        entity.Clear();
        for (;;) {
          if (!ReadOne(c)) return false;
          if (c == ';') break;
          entity.Add(c);
        }
        if (const char decoded = entity.Decode(); decoded != '\0') add(decoded);
        break;
      case '/':
        if (!in_tag) {
          add(c);
        } else if (in_quotes) {
          tag.Add(c);
        } else {
          open = false;  // wherever in the tag it stands
        }
        break;
      case '<':
        markup = true;
        if (brackets == 1) node.value = content.View();
        ++brackets;
        content.Clear();
        in_tag = true;
        if (!ReadOne(c)) return false;
        if (c == '!' || c == '?') {
          skipping = true;
          open = false;
        } else if (c == '/') {
          is_end_tag = true;
        } else if (brackets > 1) {
          // Another element begins: the next call shall read its '<' again.
          return Seek(-2, SEEK::Current);
        }
        pending = true;  // it belongs to the tag as well
        break;
      case '>':
        if (!in_tag) {
          add(c);
          break;
        }
        if (!start_parsed) {
          ParseTag(node, tag.View());
          tag.Clear();
          start_parsed = true;
          if (is_end_tag) end_tag = true;
        } else if (!(node.name == tag.View())) {
          return false;
        }
        in_tag = false;
        if (!open) return true;
        break;
      default:
        add(c);
    }
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
    node->parent = innermost_;
    innermost_ = node.release();
  }

  // Closes the innermost element.
  void Close() {
    CSafeNode* const closed = Leave();
    innermost_->AddNode(closed);
  }

 private:
  CSafeNode* Leave() {
    return std::exchange(innermost_, static_cast<CSafeNode*>(innermost_->parent));
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

bool CSimpleXMLReader::ParseTag(CSafeNode& node, std::string_view tag) {
  node.FreeAttributes();
  CWorkText<256> unquoted;
  ORVANE::MXML::ATTRIB* pending = nullptr;
  bool named = false;

  // The first token is the element's name; then names and values alternate. A second blank, or one
  // before the end, makes an empty token; blanks around '=' therefore part a value from its name.
  const auto take = [&](std::string_view token, std::size_t quotes) {
    if (!named) {
      node.name = token;
      named = true;
    } else if (pending == nullptr) {
      pending = &node.AddNewAttribute(token);
    } else {
      if (quotes == 2 && IsQuote(token.front()) && IsQuote(token.back())) {
        pending->value = token.substr(1, token.size() - 2);
      } else {
        unquoted.Clear();
        for (const char c : token) {
          if (!IsQuote(c)) unquoted.Add(c);  // interior ones too
        }
        pending->value = unquoted.View();
      }
      pending = nullptr;
    }
  };

  std::size_t quotes = 0;  // in the token; between the first and the second of a pair it goes on
  std::size_t begin = 0;
  for (std::size_t at = 0; at < tag.size(); ++at) {
    const char c = tag[at];
    if (IsQuote(c)) {
      ++quotes;
    } else if ((c == ' ' || c == '=') && quotes % 2 == 0) {
      take(tag.substr(begin, at - begin), quotes);
      begin = at + 1;
      quotes = 0;
    }
  }
  take(tag.substr(begin), quotes);
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
