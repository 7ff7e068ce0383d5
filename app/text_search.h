// Words found in texts, whatever their letters' case and accents.
//
// Texts are UTF-8; a byte that is none counts as its character in Windows-1252.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace shell {

// The text in small letters without accents, as it is compared.
std::string Folded(std::string_view text);

class TextSearch {
 public:
  // Finds texts that hold every word, in any order.
  explicit TextSearch(const std::vector<std::string>& words);

  // The words that a text does not contain, as bits; `missing` are those looked for. A search looks
  // for its first 64 words only.
  std::uint64_t Missing(std::string_view text, std::uint64_t missing) const;
  std::uint64_t All() const;

  // Where words stand in a text: ranges of its bytes, in order, that do not touch.
  std::vector<std::pair<std::size_t, std::size_t>> Places(std::string_view text) const;

 private:
  std::vector<std::string> words_;  // folded
};

}  // namespace shell
