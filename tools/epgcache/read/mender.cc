#include "tools/epgcache/read/mender.h"

#include <libxml/HTMLparser.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>
#include <utility>

#include "text/entities.h"
#include "text/windows_1252.h"
#include "tools/epgcache/read/elements.h"
#include "tools/epgcache/read/markup.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
// A tag or comment that has not ended by then is none.
constexpr std::size_t kLongestMarkup = std::size_t{1} << 20;
constexpr std::size_t kRecordDepth = 2;   // inside a programme or channel
constexpr std::size_t kElementDepth = 3;  // inside one of its elements

bool IsName(std::string_view text) {
  const auto is_start = [](char byte) {
    const char lower = LowerLetter(byte);
    return (lower >= 'a' && lower <= 'z') || byte == '_' || byte == ':' ||
           static_cast<unsigned char>(byte) >= 0x80;
  };
  return !text.empty() && is_start(text[0]) &&
         std::all_of(text.begin(), text.end(), [&](char byte) {
           return is_start(byte) || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
         });
}

// Whether XML would take the tag, of elements whose names it has, for one.
bool IsTag(std::string_view text, const Markup& tag) {
  const TagParts parts = PartsOf(text, tag);
  const bool is_end = tag.kind == MarkupKind::kEnd;
  return IsName(tag.name) && Trimmed(parts.rest) == (tag.kind == MarkupKind::kEmpty ? "/>" : ">") &&
         (!is_end || parts.attributes.empty()) &&
         std::all_of(parts.attributes.begin(), parts.attributes.end(),
                     [](const TagAttribute& attribute) {
                       return !attribute.before.empty() && IsName(attribute.name) &&
                              Trimmed(attribute.equals) == "=";
                     });
}

bool IsXmlCharacter(std::uint32_t code) {
  return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xd800) ||
         (code >= 0xe000 && code < 0xfffe) || (code >= 0x10000 && code <= 0x10ffff);
}

// The value of "#8217" or "#x2019".
bool NamesXmlCharacter(std::string_view reference) {
  const bool is_hex = reference.starts_with("#x");
  const char* const begin = reference.data() + (is_hex ? 2 : 1);
  const char* const end = reference.data() + reference.size();
  std::uint32_t code = 0;
  const auto [behind, error] = std::from_chars(begin, end, code, is_hex ? 16 : 10);
  return error == std::errc() && behind == end && IsXmlCharacter(code);
}

// By the mark of its bytes' order, or its declaration; empty for UTF-8.
std::string EncodingOf(std::string_view beginning) {
  std::int32_t mark = 0;
  UErrorCode error = U_ZERO_ERROR;
  const char* const by_mark = ucnv_detectUnicodeSignature(
      beginning.data(), static_cast<std::int32_t>(beginning.size()), &mark, &error);
  std::string name = by_mark != nullptr ? by_mark : "";
  if (by_mark == nullptr && beginning.starts_with("<?xml")) {
    const std::string_view declaration = beginning.substr(0, beginning.find("?>"));
    std::size_t at = declaration.find("encoding");
    if (at != std::string_view::npos) at = declaration.find_first_of("\"'", at);
    if (at != std::string_view::npos) {
      const std::string_view value = declaration.substr(at + 1);
      name = value.substr(0, value.find(declaration[at]));
    }
  }
  return ucnv_compareNames(name.c_str(), "UTF-8") == 0 ? "" : name;
}

}  // namespace

// To UTF-8 from another encoding.
class Mender::Decoder {
 public:
  // Null for an unknown encoding.
  static std::unique_ptr<Decoder> Of(const std::string& encoding) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const from = encoding.empty() ? nullptr : ucnv_open(encoding.c_str(), &error);
    UConverter* const to = from != nullptr ? ucnv_open("UTF-8", &error) : nullptr;
    if (to == nullptr) {
      ucnv_close(from);
      return nullptr;
    }
    return std::unique_ptr<Decoder>(new Decoder(from, to));
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() {
    ucnv_close(from_);
    ucnv_close(to_);
  }

  void Append(std::string_view bytes, bool last, std::string& utf8) {
    const char* next = bytes.data();
    char out[1024];
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
      error = U_ZERO_ERROR;
      char* end = out;
      ucnv_convertEx(to_, from_, &end, out + sizeof out, &next, bytes.data() + bytes.size(), pivot_,
                     &pivot_begin_, &pivot_end_, pivot_ + std::size(pivot_), 0, last ? 1 : 0,
                     &error);
      utf8.append(out, static_cast<std::size_t>(end - out));
    }
  }

 private:
  Decoder(UConverter* from, UConverter* to) : from_(from), to_(to) {}

  UConverter* from_;  // Owned, both.
  UConverter* to_;
  UChar pivot_[256] = {};
  UChar* pivot_begin_ = pivot_;
  UChar* pivot_end_ = pivot_;
};

Mender::Mender(ByteSource& source, const FaultSink& tell) : source_(source), tell_(tell) {}
Mender::~Mender() = default;

std::size_t Mender::Read(char* buffer, std::size_t size) {
  while (given_ == out_.size() && !finished_) {
    out_.clear();
    given_ = 0;
    Fill();
    MendAll();
    if (ended_) Finish();
  }
  const std::size_t count = std::min(size, out_.size() - given_);
  std::memcpy(buffer, out_.data() + given_, count);
  given_ += count;
  return count;
}

void Mender::Fill() {
  Tell(at_, "");
  in_.erase(0, at_);
  placed_ -= at_;
  at_ = 0;
  std::string block(kBlockBytes, '\0');
  // The whole of a declaration, also from a pipe that gives a byte at a time.
  std::size_t filled = 0;
  do {
    const std::size_t count = source_.Read(block.data() + filled, kBlockBytes - filled);
    filled += count;
    ended_ = count == 0;
  } while (!ended_ && filled < 256);
  block.resize(filled);
  if (!begun_) decoder_ = Decoder::Of(EncodingOf(block));
  if (decoder_ != nullptr) {
    decoder_->Append(block, ended_, in_);
  } else {
    in_ += block;
  }
  if (!begun_ && in_.starts_with("\xef\xbb\xbf")) in_.erase(0, 3);
  begun_ = true;
}

// Counts lines and columns up to a place and tells of it; an empty reason only counts.
void Mender::Tell(std::size_t at, const std::string& reason) {
  for (; placed_ < at; ++placed_) {
    column_ = in_[placed_] == '\n' ? 1 : column_ + 1;
    line_ += in_[placed_] == '\n' ? 1 : 0;
  }
  if (!reason.empty()) tell_({line_, column_, reason});
}

void Mender::MendAll() {
  while (at_ < in_.size() && (in_[at_] == '<' ? MendMarkup() : MendText())) {
  }
}

// Appends text of `in_` from `at` on as it should be.
void Mender::AppendMended(std::string_view text, std::size_t at, bool has_references) {
  for (std::size_t i = 0; i < text.size();) {
    const auto is_odd = [has_references](char byte) {
      return (byte == '&' && has_references) ||
             (static_cast<unsigned char>(byte) < 0x20 && byte != '\n') ||
             static_cast<unsigned char>(byte) >= 0x80;
    };
    const auto plain = static_cast<std::size_t>(
        std::find_if(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), is_odd) -
        text.begin());
    out_.append(text, i, plain - i);
    i = plain;
    if (i == text.size()) return;
    if (text[i] == '&' && has_references) {
      i += AppendReference(text.substr(i), at + i);
      continue;
    }
    const Utf8Character character = DecodeUtf8(text.substr(i));
    if (character.bytes == 0) {
      Tell(at + i, "a byte that is not UTF-8");
      out_ += EncodeUtf8(FromWindows1252(text[i]));
    } else if (!IsXmlCharacter(character.code)) {
      Tell(at + i, "a character that XML does not have");
    } else {
      if (character.code == 0xfffd && decoder_ != nullptr)
        Tell(at + i, "a byte that its encoding does not have");
      out_.append(text, i, character.bytes);
    }
    i += std::max<std::size_t>(character.bytes, 1);
  }
}

// What a text that begins with '&' refers to; gives the number of bytes used.
std::size_t Mender::AppendReference(std::string_view text, std::size_t at) {
  const std::string name(ReferenceAt(text));
  const std::size_t end = name.size() + 1;
  if (name.starts_with('#') && name.size() > 1 &&
      name.find_first_not_of("#x0123456789abcdefABCDEF") == std::string::npos) {
    const bool is_character = NamesXmlCharacter(name);
    if (is_character) out_.append(text, 0, end + 1);
    if (!is_character) Tell(at, "a reference to a character that XML does not have");
    return end + 1;
  }
  if (IsName(name)) {
    const htmlEntityDesc* const known =
        htmlEntityLookup(reinterpret_cast<const xmlChar*>(name.c_str()));
    if (has_type_ || EntityCharacter(name) != '\0') {
      out_.append(text, 0, end + 1);
      return end + 1;
    }
    if (known != nullptr) {
      Tell(at, "&" + name + "; is not declared");
      out_ += "&#" + std::to_string(known->value) + ";";
      return end + 1;
    }
  }
  Tell(at, "an '&' that does not begin a reference");
  out_ += "&amp;";
  return 1;
}

// False: the text may go on, or be cut off by the end.
bool Mender::MendText() {
  const std::string_view left = Left();
  std::size_t size = left.find('<');
  if (size == std::string_view::npos) {
    if (ended_ || left.size() < 2 * kBlockBytes) return false;
    // Before the last character and the last reference, which may go on.
    size = left.size() - 1;
    for (int i = 0; i < 3 && (left[size] & 0xc0) == 0x80; ++i) --size;
    const std::size_t reference = left.rfind('&', size);
    if (reference != std::string_view::npos && left.size() - reference < kLongestReference)
      size = reference;
  }
  const std::string_view text = left.substr(0, size);
  if (!open_.empty() && !root_ended_) {
    AppendMended(text, at_, true);
  } else if (!IsBlank(text)) {
    Tell(at_, "text outside the guide");
  }
  at_ += size;
  return true;
}

// False: its end has not been read.
bool Mender::MendMarkup() {
  const std::string_view left = Left();
  Markup markup = {};
  FindMarkup(left, 0, markup);
  const bool may_go_on = !markup.is_whole && markup.end == left.size();
  if (may_go_on && (ended_ || left.size() < kLongestMarkup)) return false;
  const bool is_tag = markup.IsElement() || markup.kind == MarkupKind::kEnd;
  if (!markup.is_whole || (is_tag && !IsTag(left, markup))) {
    Tell(at_, "a '<' that does not begin a tag");
    if (!open_.empty() && !root_ended_) out_ += "&lt;";
    ++at_;
    return true;
  }
  const std::string_view text = left.substr(0, markup.end);
  if (markup.IsElement()) {
    MendStartTag(text, markup.name, markup.kind == MarkupKind::kEmpty);
  } else if (markup.kind == MarkupKind::kEnd) {
    MendEndTag(markup.name);
  } else {
    MendDeclaration(text);
  }
  at_ += markup.end;
  return true;
}

// Comments are dropped: nothing reads them.
void Mender::MendDeclaration(std::string_view markup) {
  if (markup.starts_with("<![")) {
    if (!open_.empty()) AppendMended(markup, at_, false);
  } else if (markup.starts_with("<?xml ")) {
    // It may name another encoding than what comes out of here.
    if (has_root_) Tell(at_, "an XML declaration inside the guide");
  } else if (markup.starts_with("<!") && !markup.starts_with("<!--")) {
    if (has_root_) Tell(at_, "a document type inside the guide");
    if (!has_root_ && !has_type_) out_ += markup;
    has_type_ = has_type_ || !has_root_;
  }
}

void Mender::MendStartTag(std::string_view tag, std::string_view name, bool is_empty) {
  if (open_.empty()) {
    has_root_ = true;
  } else if (name == open_.front()) {
    Tell(at_, "another <" + Shown(name) + "> inside the guide");
    root_ended_ = false;
    CloseDownTo(1);
    return;
  }
  const bool in_record =
      open_.size() >= kRecordDepth && (open_[1] == "programme" || open_[1] == "channel");
  if (in_record && (name == "programme" || name == "channel")) {
    TellUnclosed(name);
    CloseDownTo(1);
  } else if (in_record && open_.size() >= kElementDepth && IsOfProgramme(open_[2]) &&
             IsOfProgramme(name) && FindElement(open_[2], name) == nullptr) {
    TellUnclosed(name);
    CloseDownTo(2);
  }
  if (root_ended_) Tell(at_, "the guide goes on after its end");
  root_ended_ = false;
  if (open_.size() < kRecordDepth) whole_elements_ = 0;
  if (open_.size() == kRecordDepth && is_empty) ++whole_elements_;
  AppendMended(tag, at_, true);
  if (!is_empty) open_.emplace_back(name);
}

void Mender::MendEndTag(std::string_view name) {
  if (open_.size() == 1 && name == open_.front()) {
    root_ended_ = true;
    return;
  }
  const auto found = std::find(open_.rbegin(), open_.rend(), name);
  if (found == open_.rend()) {
    const bool is_misspelt = open_.size() >= kElementDepth;
    Tell(at_, "</" + Shown(name) + ">, where " +
                  (is_misspelt ? "</" + open_.back() + "> should be" : "nothing is to be closed"));
    if (is_misspelt) CloseDownTo(open_.size() - 1);
    return;
  }
  if (found != open_.rbegin()) TellUnclosed("/" + std::string(name));
  const auto depth = static_cast<std::size_t>(open_.rend() - found) - 1;
  root_ended_ = depth == 0;
  CloseDownTo(std::max<std::size_t>(depth, 1));
}

// At a tag, which comes too early.
void Mender::TellUnclosed(std::string_view name) {
  Tell(at_, "<" + open_.back() + "> is not closed before this <" + std::string(name) + ">");
}

void Mender::CloseDownTo(std::size_t depth) {
  for (; open_.size() > depth; open_.pop_back()) {
    out_ += "</" + open_.back() + ">";
    if (open_.size() == kElementDepth) ++whole_elements_;
  }
}

// A programme that the end cuts off stays if there is something to read in it.
void Mender::Finish() {
  finished_ = true;
  if (root_ended_) {
    if (!IsBlank(Left())) Tell(at_, "text outside the guide");
  } else if (!open_.empty()) {
    Tell(in_.size(), "the document ends inside <" + open_.back() + ">");
    if (open_.size() >= kRecordDepth && whole_elements_ == 0) return;
  }
  CloseDownTo(0);
}

}  // namespace epgcache
