#include "xml/simple_xml_reader.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "text/bad_alloc.h"
#include "text/counted_text.h"
#include "text/entities.h"
#include "text/letters.h"
#include "xml/marks.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

constexpr std::size_t kWindowBytes = std::size_t{128} << 10;
// So many bytes before the next one stay in the window.
constexpr std::size_t kStepBack = 2;

// What decides something outside a tag, inside one, and in a tag's text.
using TextMarks = CMarks<'&', '<'>;
using TagMarks = CMarks<'"', '\'', '&', '/', '<', '>'>;
using TokenMarks = CMarks<'"', '\'', ' ', '='>;
using Quotes = CMarks<'"', '\''>;

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

// Makes `text` the characters of [begin, end), at whose end a byte may be written: it is a NUL for
// the time being, so that the engine can copy them from where they stand.
void Assign(MSTR& text, char* begin, char* end) {
  const char behind = std::exchange(*end, '\0');
  AssignTo(text, begin, static_cast<std::size_t>(end - begin));
  *end = behind;
}

// Names come again and again: a node that is used again often has the right one.
void AssignName(MSTR& name, char* begin, char* end) {
  if (ViewOf(name) != std::string_view(begin, end)) Assign(name, begin, end);
}

void Clear(MSTR& text) {
  if (text.length != 0) text = "";
}

// Cuts a tag's text at blanks and '=' outside quotes.
template <typename Char>
class CTokens {
 public:
  struct Token {
    Char* begin;
    Char* end;
    std::size_t quotes;  // in it

    // An attribute's value is its token without any quotes, interior ones too. Mostly it is as
    // simple as this.
    bool IsPlainValue() const {
      return quotes == 2 && Quotes::Contains(*begin) && Quotes::Contains(end[-1]);
    }
    std::string_view View() const { return {begin, static_cast<std::size_t>(end - begin)}; }
  };

  CTokens(Char* begin, Char* end) : next_(begin), end_(end) {}

  bool AtEnd() const { return at_end_; }

  // There is always one token more than there are cuts: a second blank, or one before the end,
  // makes an empty one.
  Token Next() {
    Token token = {next_, nullptr, 0};
    for (;;) {
      next_ = TokenMarks::Find(next_, end_);
      if (next_ == end_ || !Quotes::Contains(*next_)) break;
      ++token.quotes;
      next_ = Quotes::Find(next_ + 1, end_);
      if (next_ == end_) break;
      ++token.quotes;
      ++next_;
    }
    token.end = next_;
    at_end_ = next_ == end_;
    if (!at_end_) ++next_;
    return token;
  }

 private:
  Char* next_;
  Char* const end_;
  bool at_end_ = false;
};

void AssignValue(MSTR& value, const CTokens<char>::Token& token) {
  if (token.IsPlainValue()) {
    Assign(value, token.begin + 1, token.end - 1);
  } else {
    Assign(value, token.begin, std::remove_if(token.begin, token.end, Quotes::Contains));
  }
}

}  // namespace

// Moves what is kept, the text under construction included.
void CSimpleXMLReader::MoveKept(char* to) {
  std::copy(kept_, text_end_, to);
  const auto move = [this, to](std::string_view& text) {
    if (!text.empty()) text = {to + (text.data() - kept_), text.size()};
  };
  for (CElement& element : elements_) {
    move(element.tag);
    move(element.name);
    move(element.value);
  }
  text_begin_ = to + (text_begin_ - kept_);
  text_end_ = to + (text_end_ - kept_);
  kept_ = to;
}

// Makes room after what is still needed, what is kept and the bytes to look back at, and reads the
// next block. False at the end of the stream; nothing has changed then but the place of the texts.
bool CSimpleXMLReader::Refill() {
  const auto kept_bytes = static_cast<std::size_t>(text_end_ - kept_);
  const std::size_t behind = std::min(kStepBack, static_cast<std::size_t>(next_ - window_.get()));
  char look_back[kStepBack];
  std::copy(next_ - behind, next_, look_back);
  if (kept_bytes + kStepBack > window_bytes_ / 2) {
    if (kept_bytes > kLongestText) throw CBadAlloc();
    const std::size_t bytes = std::max(kWindowBytes, window_bytes_ * 2);
    auto grown = std::make_unique_for_overwrite<char[]>(bytes + kSearchOverrun);
    MoveKept(grown.get());
    window_ = std::move(grown);
    window_bytes_ = bytes;
  } else {
    MoveKept(window_.get());
  }
  next_ = limit_ = std::copy(look_back, look_back + behind, text_end_);
  const auto room = static_cast<int>(window_.get() + window_bytes_ - next_);
  const int count = std::max(0, Read(next_, room));
  limit_ += count;
  limit_offset_ += count;
  return count > 0;
}

void CSimpleXMLReader::AddToText(const char* begin, const char* end) {
  const auto count = static_cast<std::size_t>(end - begin);
  if (begin != text_end_ && count != 0) std::memmove(text_end_, begin, count);
  text_end_ += count;
}

// Reads the rest of an entity, after its '&': gives the character, '\0' for a name that means
// nothing. One that no ';' follows swallows markup too, to the end of the file, and gives kEnd.
int CSimpleXMLReader::ReadEntity() {
  CEntityName name;
  for (int c = ReadOne(); c != kEnd; c = ReadOne()) {
    if (c == ';') return name.Decode();
    name.Add(static_cast<char>(c));
  }
  return kEnd;
}

// Reads up to the next of the marks and gives it, or kEnd; adds what goes by to the text when that
// is to be kept.
template <typename Marks>
inline int CSimpleXMLReader::PassBy(bool keep) {
  for (;;) {
    char* const begin = std::exchange(next_, Marks::Find(next_, limit_));
    if (keep) AddToText(begin, next_);
    if (next_ != limit_) return static_cast<unsigned char>(*next_++);
    if (!Refill()) return kEnd;
  }
}

// Reads a unit as nearly all are: whole in the window, without entities, without '/' or '>' in its
// tag, and closed by its own name or followed by another element. That takes a handful of searches,
// and a quarter less time than if all units were read with every habit in mind. False: it may be
// odd, and nothing has changed.
bool CSimpleXMLReader::ReadUsualUnit(CElement& element, Unit& unit) {
  char* const bracket = TextMarks::Find(next_, limit_);
  if (limit_ - bracket < 2 || *bracket != '<' || bracket[1] == '!' || bracket[1] == '?') {
    return false;
  }
  const bool end_tag = bracket[1] == '/';
  char* const tag = bracket + (end_tag ? 2 : 1);
  char* const tag_end = CMarks<'&', '/', '<', '>'>::Find(tag, limit_);
  if (limit_ - tag_end < 2) return false;
  const bool self_closing = *tag_end == '/' && tag_end[1] == '>';
  if (*tag_end != '>' && !self_closing) return false;
  char* const name_end = TokenMarks::Find(tag, tag_end);
  bool in_quotes = false;
  for (char* at = name_end; (at = Quotes::Find(at, tag_end)) != tag_end; ++at) {
    in_quotes = !in_quotes;
  }
  if (in_quotes || Quotes::Contains(*name_end)) return false;

  const std::string_view name(tag, static_cast<std::size_t>(name_end - tag));
  char* next = tag_end + (self_closing ? 2 : 1);
  if (!end_tag && !self_closing) {
    char* const value = next;
    char* const value_end = TextMarks::Find(value, limit_);
    const auto left = static_cast<std::size_t>(limit_ - value_end);
    if (left < name.size() + 3 || *value_end != '<' || value_end[1] == '!' || value_end[1] == '?') {
      return false;
    }
    next = value_end;
    if (value_end[1] == '/') {
      const std::string_view closing(value_end + 2, name.size() + 1);
      if (!closing.starts_with(name) || closing.back() != '>') return false;
      next += name.size() + 3;
    } else {
      unit.open = true;
    }
    element.value = {value, static_cast<std::size_t>(value_end - value)};
    unit.valued = true;
  }
  element.tag = {tag, static_cast<std::size_t>(tag_end - tag)};
  element.name = name;
  unit.parsed = unit.markup = true;
  unit.end_tag = end_tag;
  next_ = next;
  BeginText();
  return true;
}

// Reads the next unit into a further element, which is the last one then.
bool CSimpleXMLReader::ReadUnit(Unit& unit) {
  unit = {};
  BeginText();
  if (elements_.empty()) kept_ = text_begin_;
  CElement& element = elements_.emplace_back();
  if (ReadUsualUnit(element, unit)) return true;
  unit.open = true;
  int brackets = 0;  // '<' met in this call
  bool skipping = false;
  bool in_quotes = false;  // one flag for both kinds; a '>' does not clear it
  bool is_end_tag = false;

  for (;;) {
    // Outside a tag. Only what stands between the first '<' of a call and the second can become
    // the value.
    const bool keep = brackets == 1;
    int c = PassBy<TextMarks>(keep);
    if (c == kEnd) return false;
    if (c == '&') {
      c = ReadEntity();
      if (c == kEnd) return false;
      if (keep && c != '\0') AddToText(static_cast<char>(c));
      continue;
    }
    if (keep) {
      element.value = Text();
      unit.valued = true;
    }
    BeginText();

    // In a tag, from its '<' to the next '>'.
    while (c != '>') {
      if (c == '<') {
        unit.markup = true;
        if (brackets == 1) unit.valued = true;
        ++brackets;
        c = ReadOne();
        if (c == kEnd) return false;
        if (c == '/') {
          is_end_tag = true;
        } else if (c == '!' || c == '?') {
          skipping = true;
          unit.open = false;
        } else if (brackets > 1) {
          // Another element begins: the next call shall read its '<' again.
          next_ -= kStepBack;
          return true;
        }
        // The byte belongs to the tag as well.
        if (TagMarks::Contains(static_cast<char>(c))) continue;
        if (!skipping) AddToText(static_cast<char>(c));
      } else if (c == '&') {
        c = ReadEntity();
        if (c == kEnd) return false;
        if (!skipping && c != '\0') AddToText(static_cast<char>(c));
      } else if (c == '/') {
        if (in_quotes) {
          AddToText('/');
        } else {
          unit.open = false;  // wherever in the tag it stands
        }
      } else if (!skipping) {
        in_quotes = !in_quotes;
        AddToText(static_cast<char>(c));
      }
      c = PassBy<TagMarks>(!skipping);
      if (c == kEnd) return false;
    }
    if (!unit.parsed) {
      element.tag = Text();
      element.name = CTokens(text_begin_, text_end_).Next().View();
      unit.parsed = true;
      unit.end_tag = is_end_tag;
    } else if (element.name != Text()) {
      return false;
    }
    if (!unit.open) return true;
    BeginText();
  }
}

bool CSimpleXMLReader::ReadUnit(CSafeNode& node, Unit& unit) {
  elements_.clear();
  const bool whole = ReadUnit(unit);
  const CElement element = elements_.back();
  elements_.clear();
  const auto in_window = [this](std::string_view text) {
    return text.empty() ? kept_ : window_.get() + (text.data() - window_.get());
  };
  if (unit.valued) {
    char* const begin = in_window(element.value);
    Assign(node.value, begin, begin + element.value.size());
  }
  if (unit.parsed) {
    char* const begin = in_window(element.tag);
    CutTag(node, begin, begin + element.tag.size());
  }
  return whole;
}

bool CSimpleXMLReader::ReadElement(CSafeNode& node, bool& open, bool& end_tag) {
  Unit unit;
  const bool whole = ReadUnit(node, unit);
  open = unit.open;
  end_tag = unit.end_tag;
  return whole;
}

bool CSimpleXMLReader::ReadRoot(CSafeNode& root, bool& more) {
  Seek(0, SEEK::Start);
  kept_ = text_begin_ = text_end_ = next_ = limit_ = window_.get();
  limit_offset_ = 0;
  record_name_.clear();
  Unit unit;
  while (ReadUnit(root, unit)) {
    if (unit.open) return true;
  }
  more = unit.markup;
  return false;
}

// The open elements below a parent. They are linked into the tree as they are closed; what is still
// open at the end goes with the path.
class CSimpleXMLReader::COpenPath {
 public:
  COpenPath(std::vector<Level>& levels, CSafeNode& parent) : levels_(levels) {
    MXML::NODE* last = parent.first_child;
    while (last != nullptr && last->next_sibling != nullptr) last = last->next_sibling;
    levels_.assign(1, {&parent, last});
  }
  COpenPath(const COpenPath&) = delete;
  COpenPath& operator=(const COpenPath&) = delete;
  ~COpenPath() {
    for (; !IsAtParent(); levels_.pop_back()) delete levels_.back().node;
  }

  CSafeNode& Innermost() { return *levels_.back().node; }
  bool IsAtParent() const { return levels_.size() == 1; }

  // Links a whole element in as the innermost one's last child.
  void Append(std::unique_ptr<CSafeNode> node) {
    Level& level = levels_.back();
    (level.last_child != nullptr ? level.last_child->next_sibling : level.node->first_child) =
        node.get();
    level.last_child = node.release();
  }

  void Enter(std::unique_ptr<CSafeNode> node) {
    levels_.push_back({node.get(), nullptr});
    static_cast<void>(node.release());
  }

  // Closes the innermost element.
  void Close() {
    std::unique_ptr<CSafeNode> closed(levels_.back().node);
    levels_.pop_back();
    Append(std::move(closed));
  }

 private:
  std::vector<Level>& levels_;  // the parent's, and those of elements that are owned here
};

bool CSimpleXMLReader::ReadChildren(CSafeNode& parent, MSTR& error) {
  COpenPath path(levels_, parent);
  for (;;) {
    auto node = std::make_unique<CSafeNode>();
    bool open = false;
    bool end_tag = false;
    if (!ReadElement(*node, open, end_tag) || end_tag) {
      if (!CheckEndTag(end_tag, ViewOf(path.Innermost().name), ViewOf(node->name), error)) {
        return false;
      }
      if (path.IsAtParent()) return true;
      path.Close();
    } else if (open) {
      path.Enter(std::move(node));
    } else {
      path.Append(std::move(node));
    }
  }
}

bool CSimpleXMLReader::ReadChildren(const MSTR& parent, MSTR& error, Enter* enter) {
  elements_.clear();
  open_.clear();
  return ReadBelow(ViewOf(parent), error, enter);
}

bool CSimpleXMLReader::ReadRecord(bool& open, bool& end_tag) {
  elements_.clear();
  Unit unit;
  const bool whole = ReadUnit(unit);
  if (unit.parsed && Record().name != record_name_) record_name_ = Record().name;
  open = unit.open;
  end_tag = unit.end_tag;
  return whole;
}

bool CSimpleXMLReader::ReadRecordChildren(MSTR& error) {
  open_.assign(1, 0);
  return ReadBelow(record_name_, error, nullptr);
}

// Reads on up to the end tag of the outermost element, named `parent`. Those that are open already
// are at most that one.
bool CSimpleXMLReader::ReadBelow(std::string_view parent, MSTR& error, Enter* enter) {
  const std::size_t outermost = open_.size();
  for (;;) {
    Unit unit;
    if (!ReadUnit(unit) || unit.end_tag) {
      const bool is_end = open_.size() == outermost;
      const std::string_view expected = is_end ? parent : elements_[open_.back()].name;
      if (!CheckEndTag(unit.end_tag, expected, elements_.back().name, error)) return false;
      elements_.pop_back();
      if (!open_.empty()) {
        elements_[open_.back()].count = elements_.size() - open_.back();
        open_.pop_back();
      }
      if (is_end) return true;
    } else if (unit.open) {
      if (enter != nullptr && !enter(elements_.back(), error)) return false;
      open_.push_back(elements_.size() - 1);
    }
  }
}

bool CSimpleXMLReader::ParseTag(CSafeNode& node, std::string_view tag) {
  std::string copy(tag);
  copy.resize(tag.size() + kSearchOverrun);
  CutTag(node, copy.data(), copy.data() + tag.size());
  return true;
}

// The same for a tag that may be changed, a byte past its end included.
void CSimpleXMLReader::CutTag(CSafeNode& node, char* begin, char* end) {
  if (node.first_attribute != nullptr) attributes_.TakeBack(node);
  MXML::ATTRIB** link = &node.first_attribute;  // of the next attribute
  CTokens tokens(begin, end);
  const auto name = tokens.Next();
  AssignName(node.name, name.begin, name.end);
  // Names and values alternate; blanks around '=' therefore separate a value from its name.
  while (!tokens.AtEnd()) {
    auto attribute = attributes_.Take();
    const auto attribute_name = tokens.Next();
    AssignName(attribute->name, attribute_name.begin, attribute_name.end);
    if (tokens.AtEnd()) {
      Clear(attribute->value);
    } else {
      AssignValue(attribute->value, tokens.Next());
    }
    *link = attribute.release();
    link = &(*link)->next;
  }
}

void ReadAttributes(const CElement& element, std::span<const std::string_view> names,
                    std::span<std::string> values) {
  for (std::string& value : values) value.clear();
  std::uint32_t found = 0;  // a bit for each name
  CTokens tokens(element.tag.data(), element.tag.data() + element.tag.size());
  static_cast<void>(tokens.Next());
  while (!tokens.AtEnd()) {
    const auto name = std::find(names.begin(), names.end(), tokens.Next().View());
    if (tokens.AtEnd()) return;
    const auto token = tokens.Next();
    if (name == names.end()) continue;
    const auto which = static_cast<std::size_t>(name - names.begin());
    if ((found >> which & 1U) != 0) continue;
    found |= 1U << which;
    std::string& value = values[which];
    if (token.IsPlainValue()) {
      value.assign(token.begin + 1, token.end - 1);
    } else {
      value = token.View();
      std::erase_if(value, Quotes::Contains);
    }
  }
}

std::string AttributeValue(const CElement& element, std::string_view name) {
  std::string value;
  ReadAttributes(element, {&name, 1}, {&value, 1});
  return value;
}

bool CheckEndTag(bool end_tag, std::string_view expected, std::string_view found, MSTR& error) {
  if (!end_tag) {
    error = "Premature end of file.";
    return false;
  }
  if (expected != found) {
    error.Format("<%s> end tag is bad, found <%s>.", std::string(expected).c_str(),
                 std::string(found).c_str());
    return false;
  }
  return true;
}
