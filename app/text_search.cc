#include "app/text_search.h"

#include <algorithm>
#include <iterator>

#include "app/fold_table.h"
#include "text/utf8.h"
#include "text/windows_1252.h"

namespace shell {

namespace {

constexpr std::size_t kMostWords = 64;

// Takes the first character off a text that is not empty, and adds what it is compared as.
void FoldOne(std::string_view& text, std::string& folded) {
  const Utf8Character character = DecodeUtf8(text);
  const bool is_utf8 = character.bytes != 0;
  const char32_t code = is_utf8 ? character.code : FromWindows1252(text[0]);
  const std::string_view bytes = text.substr(0, is_utf8 ? character.bytes : 1);
  text.remove_prefix(bytes.size());
  if (code < 0x80) {
    folded += static_cast<char>(code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code);
    return;
  }
  const auto* const entry =
      std::lower_bound(std::begin(kFolds), std::end(kFolds), code,
                       [](const Fold& fold, char32_t wanted) { return fold.code < wanted; });
  if (entry != std::end(kFolds) && entry->code == code) {
    folded += entry->folded;
  } else {
    folded += EncodeUtf8(code);
  }
}

}  // namespace

std::string Folded(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  while (!text.empty()) FoldOne(text, folded);
  return folded;
}

TextSearch::TextSearch(const std::vector<std::string>& words) {
  for (const std::string& text : words) {
    const std::string folded = Folded(text);
    for (std::size_t begin = 0; begin < folded.size();) {
      const std::size_t end = std::min(folded.find(' ', begin), folded.size());
      if (end > begin && words_.size() < kMostWords)
        words_.push_back(folded.substr(begin, end - begin));
      begin = end + 1;
    }
  }
}

std::uint64_t TextSearch::All() const {
  return words_.size() == kMostWords ? ~std::uint64_t{0} : (std::uint64_t{1} << words_.size()) - 1;
}

std::uint64_t TextSearch::Missing(std::string_view text, std::uint64_t missing) const {
  if (text.empty()) return missing;
  const std::string folded = Folded(text);
  for (std::size_t i = 0; i < words_.size(); ++i) {
    const std::uint64_t bit = std::uint64_t{1} << i;
    if ((missing & bit) != 0 && folded.find(words_[i]) != std::string::npos) missing &= ~bit;
  }
  return missing;
}

std::vector<std::pair<std::size_t, std::size_t>> TextSearch::Places(std::string_view text) const {
  std::string folded;
  std::vector<std::size_t> source;  // where each folded byte comes from
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t at = text.size() - rest.size();
    FoldOne(rest, folded);
    source.resize(folded.size(), at);
  }
  source.push_back(text.size());
  std::vector<std::pair<std::size_t, std::size_t>> found;
  for (const std::string& word : words_) {
    for (std::size_t at = folded.find(word); at != std::string::npos;
         at = folded.find(word, at + word.size())) {
      std::size_t end = at + word.size();
      // A character that is several letters is marked whole.
      while (source[end] == source[end - 1]) ++end;
      found.emplace_back(source[at], source[end]);
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<std::pair<std::size_t, std::size_t>> places;
  for (const auto& [begin, end] : found) {
    if (!places.empty() && begin <= places.back().second) {
      places.back().second = std::max(places.back().second, end);
    } else {
      places.emplace_back(begin, end);
    }
  }
  return places;
}

}  // namespace shell
