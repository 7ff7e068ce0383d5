// The bytes that mean something to the reader, and the search for the next of them.
//
// Listings are runs of plain bytes between marks, most of them short. The search looks at a block
// of 16 bytes at a time, compares it with each mark, and takes the first hit from a bit mask: so
// even a short run costs no branch that depends on where it ends.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#if defined(__SSE2__) && !defined(EPG_PLAIN_SEARCH)
#include <emmintrin.h>
#define EPG_SEARCH_SSE2
#elif defined(__aarch64__) && !defined(EPG_PLAIN_SEARCH)
#include <arm_neon.h>
#define EPG_SEARCH_NEON
#endif

// A search may read so many bytes past the end of the range: they must be there, whatever
// they hold.
inline constexpr int kSearchOverrun = 16;

// A set of bytes.
template <char... kBytes>
struct CMarks {
  static constexpr std::array<bool, 256> kTable = [] {
    std::array<bool, 256> table = {};
    ((table[static_cast<unsigned char>(kBytes)] = true), ...);
    return table;
  }();

  static constexpr bool Contains(char c) { return kTable[static_cast<unsigned char>(c)]; }

  // The first byte of the set in [begin, end), or `end`, byte by byte.
  template <typename Char>
  static Char* FindPlain(Char* begin, Char* end) {
    while (begin != end && !Contains(*begin)) ++begin;
    return begin;
  }

  // The same. REQUIRES: kSearchOverrun bytes can be read from `end` on.
  template <typename Char>
  static Char* Find(Char* begin, Char* end) {
#if defined(EPG_SEARCH_SSE2)
    for (; begin < end; begin += 16) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
      __m128i hits = _mm_setzero_si128();
      ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(kBytes)))), ...);
      const auto mask = static_cast<std::uint32_t>(_mm_movemask_epi8(hits));
      if (mask != 0) return Limit(begin + std::countr_zero(mask), end);
    }
    return end;
#elif defined(EPG_SEARCH_NEON)
    for (; begin < end; begin += 16) {
      const uint8x16_t block = vld1q_u8(reinterpret_cast<const std::uint8_t*>(begin));
      uint8x16_t hits = vdupq_n_u8(0);
      ((hits = vorrq_u8(hits, vceqq_u8(block, vdupq_n_u8(static_cast<std::uint8_t>(kBytes))))),
       ...);
      // Four bits a byte.
      const uint8x8_t narrow = vshrn_n_u16(vreinterpretq_u16_u8(hits), 4);
      const std::uint64_t mask = vget_lane_u64(vreinterpret_u64_u8(narrow), 0);
      if (mask != 0) return Limit(begin + std::countr_zero(mask) / 4, end);
    }
    return end;
#else
    return FindPlain(begin, end);
#endif
  }

 private:
  template <typename Char>
  static Char* Limit(Char* found, Char* end) {
    return found < end ? found : end;
  }
};
