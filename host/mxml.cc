#include "host/mxml.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory_resource>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "host/internal/texts.h"
#include "host/mstrm.h"
#include "text/entities.h"

namespace ORVANE {

MXML::ATTRIB::ATTRIB() : next(nullptr) {}
MXML::ATTRIB::~ATTRIB() = default;

MXML::NODE::NODE() : first_child(nullptr), next_sibling(nullptr), first_attribute(nullptr) {}
MXML::NODE::~NODE() = default;

MXML::NODE* MXML::NODE::FindNode(const char* wanted) const {
  const std::string_view wanted_name = wanted;
  for (NODE* child = first_child; child != nullptr; child = child->next_sibling) {
    if (TEXTS::View(child->name) == wanted_name) return child;
  }
  // The siblings that follow the nodes being looked into, innermost last: depth costs no stack.
  std::vector<NODE*> behind;
  NODE* node = first_child;
  while (node != nullptr) {
    if (TEXTS::View(node->name) == wanted_name) return node;
    if (node->next_sibling != nullptr) behind.push_back(node->next_sibling);
    node = node->first_child;
    if (node == nullptr && !behind.empty()) {
      node = behind.back();
      behind.pop_back();
    }
  }
  return nullptr;
}

namespace {

const MXML::ATTRIB* FindAttribute(const MXML::NODE& node, std::string_view wanted) {
  const MXML::ATTRIB* attribute = node.first_attribute;
  while (attribute != nullptr && TEXTS::View(attribute->name) != wanted) {
    attribute = attribute->next;
  }
  return attribute;
}

}  // namespace

MSTR MXML::NODE::GetAttribute(const char* wanted) const {
  const ATTRIB* const attribute = FindAttribute(*this, wanted);
  return attribute != nullptr ? attribute->value : MSTR();
}

int MXML::NODE::GetAttributeAsInt(const char* wanted, int missing) const {
  const ATTRIB* const attribute = FindAttribute(*this, wanted);
  if (attribute == nullptr) return missing;
  return static_cast<int>(std::strtoll(attribute->value.text, nullptr, 10));
}

void MXML::NODE::AddNode(NODE* child) {
  NODE** end = &first_child;
  while (*end != nullptr) end = &(*end)->next_sibling;
  *end = child;
}

void MXML::NODE::AddAttribute(ATTRIB* attribute) {
  ATTRIB** end = &first_attribute;
  while (*end != nullptr) end = &(*end)->next;
  *end = attribute;
}

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool EndsName(char c) {
  return IsBlank(c) || c == '/' || c == '>' || c == '=' || c == '<' || c == '"' || c == '\'' ||
         c == '&';
}

void AppendUtf8(std::uint32_t code, std::string& text) {
  const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  const auto trail = [&put, code](unsigned shift) { put(0x80 | ((code >> shift) & 0x3f)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xc0 | (code >> 6));
    trail(0);
  } else if (code < 0x10000) {
    put(0xe0 | (code >> 12));
    trail(6);
    trail(0);
  } else {
    put(0xf0 | (code >> 18));
    trail(12);
    trail(6);
    trail(0);
  }
}

// Reads what stands between '&' and ';'. False when it names no character.
bool AppendReference(std::string_view name, std::string& text) {
  if (const char character = EntityCharacter(name); character != '\0') {
    text += character;
    return true;
  }
  if (name.size() < 2 || name[0] != '#') return false;
  const bool hexadecimal = name[1] == 'x';
  const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
  std::uint32_t code = 0;
  for (const char c : digits) {
    const char lower = static_cast<char>(c | 0x20);
    std::uint32_t digit = 0;
    if (c >= '0' && c <= '9') {
      digit = static_cast<std::uint32_t>(c - '0');
    } else if (hexadecimal && lower >= 'a' && lower <= 'f') {
      digit = static_cast<std::uint32_t>(lower - 'a' + 10);
    } else {
      return false;
    }
    code = code * (hexadecimal ? 16 : 10) + digit;
    if (code > 0x10ffff) return false;
  }
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  if (digits.empty() || code == 0 || surrogate) return false;
  AppendUtf8(code, text);
  return true;
}

// Appends character data, its references resolved.
void AppendText(std::string_view raw, std::string& text) {
  // Longer ones, which only zeros can make, stay as they are.
  constexpr std::size_t kLongest = 32;
  std::size_t copied = 0;
  for (std::size_t at = raw.find('&'); at != std::string_view::npos; at = raw.find('&', at)) {
    const std::size_t end = raw.substr(at + 1, kLongest).find(';');
    text += raw.substr(copied, at - copied);
    copied = at;
    if (end != std::string_view::npos && AppendReference(raw.substr(at + 1, end), text)) {
      copied = at + end + 2;
    }
    at = copied == at ? at + 1 : copied;
  }
  text += raw.substr(copied);
}

// Where the nodes and texts of a document stand, in blocks that are freed together. Nothing in them
// is destroyed: a node's texts are placed there too.
class MEMORY {
 public:
  template <typename Part>
  Part* Make() {
    return ::new (blocks_.allocate(sizeof(Part), alignof(Part))) Part;
  }

  // Points an empty text at a copy of the characters.
  void Keep(std::string_view characters, MSTR& text) {
    if (characters.empty()) return;
    auto* const copy = static_cast<char*>(blocks_.allocate(characters.size() + 1, 1));
    std::memcpy(copy, characters.data(), characters.size());
    copy[characters.size()] = '\0';
    TEXTS::Place(text, {copy, characters.size()});
  }

  void Clear() { blocks_.release(); }

 private:
  std::pmr::monotonic_buffer_resource blocks_;
};

// The names of a document. There are a few, again and again: those met lately are not kept twice.
class NAMES {
 public:
  explicit NAMES(MEMORY& memory) : memory_(memory) {}

  // Points an empty text at the name.
  void Keep(std::string_view name, MSTR& text) {
    const auto letter = [&](std::size_t at) { return static_cast<unsigned char>(name[at]); };
    const std::size_t mixed =
        letter(0) * 5u + letter(name.size() / 2) * 3u + letter(name.size() - 1) + name.size() * 7u;
    std::string_view& recent = recent_[mixed % recent_.size()];
    if (recent == name) {
      TEXTS::Place(text, recent);
    } else {
      memory_.Keep(name, text);
      recent = TEXTS::View(text);
    }
  }

 private:
  MEMORY& memory_;
  std::array<std::string_view, 64> recent_;
};

// One pass over a document's text.
class PARSER {
 public:
  PARSER(std::string_view text, MXML::NODE& root, MEMORY& memory)
      : text_(text), root_(root), memory_(memory), names_(memory) {}

  // False when the document is malformed; `root` then holds what was read before the fault.
  bool Parse() {
    if (text_.substr(0, 3) == "\xef\xbb\xbf") at_ = 3;
    while (at_ < text_.size()) {
      if (!(text_[at_] == '<' ? Markup() : CharacterData())) return false;
    }
    return open_.empty() && root_.first_child != nullptr;
  }

 private:
  // An element that has not been closed. Its text so far ends the texts of all such elements, which
  // follow one another: what an inner one adds is taken off when it is closed.
  struct OPEN {
    MXML::NODE* node;
    std::size_t text_begin;
    MXML::NODE* last_child;
  };

  bool InDocumentElement() const { return !open_.empty(); }

  void Open(MXML::NODE& node) { open_.push_back({&node, open_text_.size(), nullptr}); }

  void Close() {
    const OPEN closed = open_.back();
    open_.pop_back();
    memory_.Keep(std::string_view(open_text_).substr(closed.text_begin), closed.node->value);
    open_text_.resize(closed.text_begin);
  }

  bool CharacterData() {
    const std::size_t end = text_.find('<', at_);
    const std::string_view raw = text_.substr(at_, end - at_);
    at_ += raw.size();
    if (InDocumentElement()) {
      AppendText(raw, open_text_);
      return true;
    }
    for (const char c : raw) {
      if (!IsBlank(c)) return false;
    }
    return true;
  }

  bool Markup() {
    const char second = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
    if (second == '/') return EndTag();
    if (second == '?') return SkipPast("?>", 2);
    if (second != '!') return StartTag();
    const std::string_view rest = text_.substr(at_);
    if (rest.substr(0, 4) == "<!--") return SkipPast("-->", 4);
    if (rest.substr(0, 9) == "<![CDATA[") return CharacterSection();
    return rest.substr(0, 9) == "<!DOCTYPE" && DocumentType();
  }

  bool SkipPast(std::string_view end, std::size_t opening) {
    const std::size_t found = text_.find(end, at_ + opening);
    if (found == std::string_view::npos) return false;
    at_ = found + end.size();
    return true;
  }

  bool CharacterSection() {
    const std::size_t begin = at_ + 9;
    if (!InDocumentElement() || !SkipPast("]]>", 9)) return false;
    open_text_ += text_.substr(begin, at_ - 3 - begin);
    return true;
  }

  bool DocumentType() {
    if (root_.first_child != nullptr) return false;
    std::size_t brackets = 0;
    at_ += 9;
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '"' || c == '\'') {
        if (!SkipPast({&c, 1}, 1)) return false;
        continue;
      }
      if (text_.substr(at_, 4) == "<!--") {
        if (!SkipPast("-->", 4)) return false;
        continue;
      }
      ++at_;
      if (c == '[') ++brackets;
      if (c == ']' && brackets > 0) --brackets;
      if (c == '>' && brackets == 0) return true;
    }
    return false;
  }

  std::string_view Name() {
    const std::size_t begin = at_;
    while (at_ < text_.size() && !EndsName(text_[at_])) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  void Blanks() {
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
  }

  bool Take(char wanted) {
    if (at_ == text_.size() || text_[at_] != wanted) return false;
    ++at_;
    return true;
  }

  bool EndTag() {
    at_ += 2;
    if (!InDocumentElement() || TEXTS::View(open_.back().node->name) != Name()) return false;
    Blanks();
    Close();
    return Take('>');
  }

  bool StartTag() {
    ++at_;
    const std::string_view name = Name();
    const bool second_document = !InDocumentElement() && root_.first_child != nullptr;
    if (name.empty() || second_document) return false;
    auto* const node = memory_.Make<MXML::NODE>();
    names_.Keep(name, node->name);
    if (!InDocumentElement()) {
      root_.first_child = node;
    } else {
      OPEN& parent = open_.back();
      (parent.last_child != nullptr ? parent.last_child->next_sibling : parent.node->first_child) =
          node;
      parent.last_child = node;
    }
    MXML::ATTRIB** attributes_end = &node->first_attribute;
    for (;;) {
      const std::size_t before = at_;
      Blanks();
      if (Take('>')) {
        Open(*node);
        return true;
      }
      if (Take('/')) return Take('>');
      if (at_ == before || !Attribute(attributes_end)) return false;
    }
  }

  bool Attribute(MXML::ATTRIB**& end) {
    const std::string_view name = Name();
    Blanks();
    if (name.empty() || !Take('=')) return false;
    Blanks();
    if (at_ == text_.size()) return false;
    const char quote = text_[at_];
    const std::size_t begin = at_ + 1;
    if ((quote != '"' && quote != '\'') || !SkipPast({&quote, 1}, 1)) return false;
    const std::string_view raw = text_.substr(begin, at_ - 1 - begin);
    if (raw.find('<') != std::string_view::npos) return false;
    std::string value;
    AppendText(raw, value);
    auto* const attribute = memory_.Make<MXML::ATTRIB>();
    names_.Keep(name, attribute->name);
    memory_.Keep(value, attribute->value);
    *end = attribute;
    end = &attribute->next;
    return true;
  }

  const std::string_view text_;
  MXML::NODE& root_;
  MEMORY& memory_;
  NAMES names_;
  std::vector<OPEN> open_;  // innermost last: depth costs no stack
  std::string open_text_;
  std::size_t at_ = 0;
};

bool ReadWhole(const MSTR& file_name, MSTR& text) {
  MSTRM stream;
  if (!stream.Open(file_name, true, false, true)) return false;
  stream.Seek(0, MSTRM::SEEK::End);
  TEXTS::Reserve(text, static_cast<std::size_t>(stream.Position()));
  stream.Seek(0, MSTRM::SEEK::Start);
  char block[16 * 1024];
  for (int count = stream.Read(block, sizeof block); count > 0;
       count = stream.Read(block, sizeof block)) {
    TEXTS::Append(text, {block, static_cast<std::size_t>(count)});
  }
  return true;
}

}  // namespace

struct MXML::STATE {
  MSTR text;
  MEMORY memory;
  NODE root;

  void Clear() {
    MSTR nothing;
    TEXTS::Swap(text, nothing);
    root.first_child = nullptr;
    memory.Clear();
  }
};

MXML::MXML() : state_(new STATE) {}
MXML::~MXML() { delete state_; }

const MSTR& MXML::LoadedText() const { return state_->text; }
MXML::NODE& MXML::Root() { return state_->root; }

bool MXML::Load(const MSTR& file_name) {
  state_->Clear();
  MSTR text;
  if (!ReadWhole(file_name, text)) return false;
  try {
    if (PARSER(TEXTS::View(text), state_->root, state_->memory).Parse()) {
      TEXTS::Swap(state_->text, text);
      return true;
    }
  } catch (const std::bad_alloc&) {
    state_->Clear();
    throw;
  }
  state_->Clear();
  return false;
}

}  // namespace ORVANE
