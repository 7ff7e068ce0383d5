// A text of the schedule: one word, a view into the schedule's memory.
//
// A schedule holds millions of texts, most of them empty or a few characters long, and none of them
// changes once it is there. So a text is a pointer to its characters, which a NUL follows. Before
// them stands their number, in one byte; of a long text that byte is kLong, and the number stands
// before that.
//
// Units: lengths are bytes.
// Ownership: the characters are the memory's that holds the text; copies of a text share them.
// Threads: read-only from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

class CText {
 public:
  // Empty.
  CText() : characters_(kEmpty + 1) {}

  // The memory that a text takes.
  static std::size_t StoredBytes(std::string_view text) {
    return (text.size() < kLong ? 0 : sizeof(Length)) + 1 + text.size() + 1;
  }
  // Makes a text in memory of that size, of any alignment. REQUIRES: its length fits 32 bits.
  static CText Store(std::string_view text, char* memory) {
    if (text.size() >= kLong) {
      const auto length = static_cast<Length>(text.size());
      std::memcpy(memory, &length, sizeof length);
      memory += sizeof length;
    }
    *memory++ = static_cast<char>(text.size() < kLong ? text.size() : kLong);
    std::memcpy(memory, text.data(), text.size());
    memory[text.size()] = '\0';
    CText stored;
    stored.characters_ = memory;
    return stored;
  }

  // NUL-terminated, never null.
  const char* Characters() const { return characters_; }
  std::string_view View() const {
    Length length = static_cast<unsigned char>(characters_[-1]);
    if (length == kLong) std::memcpy(&length, characters_ - 1 - sizeof length, sizeof length);
    return {characters_, length};
  }
  bool IsEmpty() const { return characters_[-1] == 0; }

 private:
  using Length = std::uint32_t;

  static constexpr unsigned char kLong = 0xff;
  static constexpr char kEmpty[2] = {};

  const char* characters_;
};

inline bool operator==(const CText& a, std::string_view b) { return a.View() == b; }
