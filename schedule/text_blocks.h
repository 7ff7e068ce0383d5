// The texts of many records, in blocks.
//
// Ownership: texts end with the blocks that they stand in.
// Threads: like any container's.
// Errors: CBadAlloc when memory runs out, or for a text longer than any may be.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "schedule/blocks.h"
#include "schedule/text.h"

// Genres, years, ratings and markers come again and again: a short text that was kept lately is not
// kept twice.
//
// Invariant: every text that is remembered stands in front of the place where the next one goes.
class CTextBlocks {
 public:
  struct Mark {
    CBlocks::Mark place;
    std::uint64_t serial;
  };

  // The text's copy in the blocks.
  CText Keep(std::string_view text) {
    if (text.empty()) return {};
    if (text.size() > kLongestRemembered) return Store(text);
    return KeepShort(text);
  }

  Mark GetMark() {
    remembered_since_mark_ = 0;
    return {blocks_.GetMark(), ++serial_};
  }

  // Takes back all texts since `mark`. REQUIRES: as CBlocks::WindBack.
  void WindBack(const Mark& mark);

  void Clear();

 private:
  static constexpr std::size_t kLongestRemembered = 32;
  static constexpr std::size_t kRemembered = 256;
  static constexpr std::size_t kMostNoted = 32;

  CText Store(std::string_view text);
  CText KeepShort(std::string_view text);

  CBlocks blocks_;
  std::array<CText, kRemembered> remembered_;
  // Which of them the texts since the last mark are, as far as there is space to note it.
  std::array<std::uint8_t, kMostNoted> noted_;
  std::size_t remembered_since_mark_ = 0;
  std::uint64_t serial_ = 0;  // of the last mark
};
