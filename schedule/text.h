// A text of the schedule: one word, a view into the schedule's memory.
//
// A schedule holds millions of texts, most of them empty or a few characters long, and none of them
// changes once it is there. So a text is a pointer to its characters, which a NUL follows and its
// length precedes.
//
// Units: lengths are bytes.
// Ownership: the characters are the memory's that made the text; copies of a text share them.
// Threads: read-only from any thread.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

class CText {
 public:
  using Length = std::uint32_t;

  // Empty.
  CText() : characters_(kEmpty + sizeof(Length)) {}
  // The text whose length and characters stand at `stored`.
  explicit CText(const char* stored) : characters_(stored + sizeof(Length)) {}

  // NUL-terminated, never null.
  const char* Characters() const { return characters_; }
  std::string_view View() const {
    Length length = 0;  // at no particular alignment
    std::memcpy(&length, characters_ - sizeof length, sizeof length);
    return {characters_, length};
  }
  bool IsEmpty() const { return View().empty(); }

 private:
  static constexpr char kEmpty[sizeof(Length) + 1] = {};

  const char* characters_;
};

inline bool operator==(const CText& a, std::string_view b) { return a.View() == b; }
