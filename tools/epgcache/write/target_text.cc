#include "tools/epgcache/write/target_text.h"

#include <unicode/normalizer2.h>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_map>

#include "text/windows_1252.h"
#include "tools/epgcache/failure.h"

namespace epgcache {

namespace {

std::optional<char> ByteOf(char32_t character) {
  if (character > 0xffff) return std::nullopt;
  return ToWindows1252(static_cast<char16_t>(character));
}

void AppendEscaped(std::string& target, std::string_view text) {
  // Most texts hold none. The compiler makes a loop of this form take many bytes a step.
  const auto is_mark = [](char byte) { return (byte == '&') | (byte == '<') | (byte == '>'); };
  unsigned char holds_any = 0;
  for (const char byte : text) holds_any = static_cast<unsigned char>(holds_any | is_mark(byte));
  while (holds_any != 0) {
    const auto* const mark = std::find_if(text.begin(), text.end(), is_mark);
    target.append(text.begin(), mark);
    if (mark == text.end()) return;
    target += *mark == '&' ? "&amp;" : *mark == '<' ? "&lt;" : "&gt;";
    text.remove_prefix(static_cast<std::size_t>(mark - text.begin()) + 1);
  }
  target += text;
}

}  // namespace

class TargetText::Converter {
 public:
  Converter() {
    UErrorCode error = U_ZERO_ERROR;
    composer_ = icu::Normalizer2::getNFCInstance(error);
    transliterator_.reset(
        icu::Transliterator::createInstance("Any-Latin; Latin-ASCII", UTRANS_FORWARD, error));
    if (U_FAILURE(error) || transliterator_ == nullptr)
      throw Failure(std::string("cannot transliterate texts: ") + u_errorName(error));
  }

  void Convert(std::string_view utf8, std::string& bytes, Unencodable& count) {
    const auto text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(utf8.data(), static_cast<std::int32_t>(utf8.size())));
    UErrorCode error = U_ZERO_ERROR;
    const icu::UnicodeString composed = composer_->normalize(text, error);
    std::u16string unencodable;  // a run of it, as letters depend on their neighbours
    for (std::int32_t at = 0; at < composed.length(); at = composed.moveIndex32(at, 1)) {
      const auto character = static_cast<char32_t>(composed.char32At(at));
      if (const auto byte = ByteOf(character)) {
        Replace(unencodable, bytes, count);
        bytes += *byte;
      } else {
        ++count.transliterated;
        const icu::UnicodeString units(static_cast<UChar32>(character));
        unencodable.append(units.getBuffer(), static_cast<std::size_t>(units.length()));
        // A run's time grows with its square.
        if (unencodable.size() >= kLongestRun) Replace(unencodable, bytes, count);
      }
    }
    Replace(unencodable, bytes, count);
  }

 private:
  struct Replacement {
    std::string bytes;
    std::uint64_t lost = 0;
  };

  static constexpr std::size_t kLongestRun = 64;

  // Words repeat, and transliterating one takes microseconds.
  void Replace(std::u16string& unencodable, std::string& bytes, Unencodable& count) {
    if (unencodable.empty()) return;
    constexpr std::size_t kMostKnown = 50'000;
    if (known_.size() >= kMostKnown) known_.clear();
    const auto [entry, is_new] = known_.try_emplace(unencodable);
    if (is_new) entry->second = ReplacementOf(unencodable);
    bytes += entry->second.bytes;
    count.lost += entry->second.lost;
    unencodable.clear();
  }

  Replacement ReplacementOf(const std::u16string& unencodable) const {
    icu::UnicodeString text(unencodable.data(), static_cast<std::int32_t>(unencodable.size()));
    transliterator_->transliterate(text);
    Replacement replacement;
    for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
      const UChar32 character = text.char32At(at);
      if (const auto byte = ByteOf(static_cast<char32_t>(character))) {
        replacement.bytes += *byte;
      } else if (!u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) {
        replacement.bytes += '?';
        ++replacement.lost;
      }
    }
    return replacement;
  }

  std::unordered_map<std::u16string, Replacement> known_;
  const icu::Normalizer2* composer_ = nullptr;  // the library's
  std::unique_ptr<icu::Transliterator> transliterator_;
};

TargetText::TargetText(Encoding encoding)
    : converter_(encoding == Encoding::kUtf8 ? nullptr : std::make_unique<Converter>()) {}

TargetText::~TargetText() = default;

const char* TargetText::EncodingName() const {
  return converter_ == nullptr ? "UTF-8" : "windows-1252";
}

std::string_view TargetText::Converted(std::string_view utf8, Unencodable& unencodable) {
  const auto is_ascii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
  if (converter_ == nullptr || std::all_of(utf8.begin(), utf8.end(), is_ascii)) return utf8;
  converted_.clear();
  converter_->Convert(utf8, converted_, unencodable);
  return converted_;
}

void TargetText::Append(std::string& target, std::string_view utf8, Unencodable& unencodable) {
  AppendEscaped(target, Converted(utf8, unencodable));
}

std::uint64_t TargetText::AppendName(std::string& target, std::string_view utf8,
                                     Unencodable& unencodable) {
  std::string name(Converted(utf8, unencodable));
  std::uint64_t slashes = 0;
  const std::string_view instead = converter_ == nullptr ? "\u2215" : "-";
  for (std::size_t at = 0; (at = name.find('/', at)) != std::string::npos; ++slashes)
    name.replace(at, 1, instead);
  AppendEscaped(target, name);
  return slashes;
}

}  // namespace epgcache
