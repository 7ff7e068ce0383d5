#include "xml/simple_xml_reader.h"

#include <cstddef>
#include <memory>
#include <vector>

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

}  // namespace

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
  bool after_bracket = false;
  bool in_entity = false;
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
  while (Read(&c, 1) == 1) {
    if (in_entity) {
      // An '&' that no ';' follows swallows markup too, to the end of the file.
      if (c != ';') {
        entity.Add(c);
        continue;
      }
      if (const char decoded = entity.Decode(); decoded != '\0') add(decoded);
      in_entity = false;
      continue;
    }
    if (after_bracket) {
      after_bracket = false;
      if (c == '!' || c == '?') {
        skipping = true;
        open = false;
      } else if (c == '/') {
        is_end_tag = true;
      } else if (brackets > 1) {
        // Another element begins: the next call shall read its '<' again.
        return Seek(-2, SEEK::Current);
      }
    }
    switch (c) {
      case '"':
      case '\'':
        if (in_tag && !skipping) in_quotes = !in_quotes;
        add(c);
        break;
      case '&':
        in_entity = true;
        entity.Clear();
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
        after_bracket = true;
        markup = true;
        if (brackets == 1) node.value = content.View();
        ++brackets;
        content.Clear();
        in_tag = true;
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
  return false;
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

bool CSimpleXMLReader::ReadChildren(CSafeNode& parent, MSTR& error) {
  // The open elements below `parent`, innermost last: depth costs heap, not stack.
  std::vector<std::unique_ptr<CSafeNode>> path;
  for (;;) {
    CSafeNode& innermost = path.empty() ? parent : *path.back();
    auto node = std::make_unique<CSafeNode>();
    bool open = false;
    bool end_tag = false;
    if (!ReadElement(*node, open, end_tag) || end_tag) {
      if (!CheckEndTag(end_tag, innermost.name, node->name, error)) return false;
      if (path.empty()) return true;
      node = std::move(path.back());
      path.pop_back();
      (path.empty() ? parent : *path.back()).AddNode(node.release());
    } else if (open) {
      path.push_back(std::move(node));
    } else {
      innermost.AddNode(node.release());
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
  const auto take = [&](std::string_view token) {
    if (!named) {
      node.name = token;
      named = true;
    } else if (pending == nullptr) {
      auto attribute = std::make_unique<ORVANE::MXML::ATTRIB>();
      attribute->name = token;
      pending = attribute.release();
      node.AddAttribute(pending);
    } else {
      unquoted.Clear();
      for (const char c : token) {
        if (!IsQuote(c)) unquoted.Add(c);  // interior ones too
      }
      pending->value = unquoted.View();
      pending = nullptr;
    }
  };

  bool in_quotes = false;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < tag.size(); ++at) {
    const char c = tag[at];
    if (IsQuote(c)) {
      in_quotes = !in_quotes;
    } else if ((c == ' ' || c == '=') && !in_quotes) {
      take(tag.substr(begin, at - begin));
      begin = at + 1;
    }
  }
  take(tag.substr(begin));
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
