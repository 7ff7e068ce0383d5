// The bytes that mean something to the reader, and the search for the next of them.
#pragma once

#include <array>

// A set of bytes.
template <char... kBytes>
struct CMarks {
  static constexpr std::array<bool, 256> kTable = [] {
    std::array<bool, 256> table = {};
    ((table[static_cast<unsigned char>(kBytes)] = true), ...);
    return table;
  }();

  static constexpr bool Contains(char c) { return kTable[static_cast<unsigned char>(c)]; }

  // The first byte of the set in [begin, end), or `end`.
  template <typename Char>
  static Char* Find(Char* begin, Char* end) {
    while (begin != end && !Contains(*begin)) ++begin;
    return begin;
  }
};
