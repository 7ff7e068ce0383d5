// Texts as they stand in the file that is written: in its encoding, with what XML needs escaped.
//
// Threads: one at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace epgcache {

enum class Encoding { kUtf8, kWindows1252 };

// Characters that a text's encoding does not have: all of them, and those for which no other
// letters could be found either.
struct Unencodable {
  std::uint64_t transliterated = 0;
  std::uint64_t lost = 0;
};

class TargetText {
 public:
  explicit TargetText(Encoding encoding);
  TargetText(const TargetText&) = delete;
  TargetText& operator=(const TargetText&) = delete;
  ~TargetText();

  // Appends UTF-8 text to `target`, and what the encoding does not have of it to `unencodable`.
  void Append(std::string& target, std::string_view utf8, Unencodable& unencodable);

  // The same for a station's name. The plug-in's name of a station ends at a '/', so that becomes
  // the character that looks most like it; gives how many there were.
  std::uint64_t AppendName(std::string& target, std::string_view utf8, Unencodable& unencodable);

  // The encoding's name, as XML has it.
  const char* EncodingName() const;

 private:
  class Converter;

  std::string_view Converted(std::string_view utf8, Unencodable& unencodable);

  const std::unique_ptr<Converter> converter_;  // null: the texts are in the target's encoding
  std::string converted_;
};

}  // namespace epgcache
