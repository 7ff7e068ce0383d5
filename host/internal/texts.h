// What the engine's own parts do with texts that may hold NULs, or that stand in other storage.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/mstr.h"

namespace ORVANE {

struct TEXTS {
  // No text grows beyond this many bytes.
  static constexpr std::size_t kMaxLength = 0x3fffffff;

  static std::string_view View(const MSTR& text) { return {text.text, text.length}; }

  // `characters` may be a part of the text.
  static void Assign(MSTR& text, std::string_view characters);
  static void Append(MSTR& text, std::string_view characters);
  static void Truncate(MSTR& text, std::uint32_t length);
  static void Reserve(MSTR& text, std::size_t capacity);
  static void Swap(MSTR& a, MSTR& b);
  static void Format(MSTR& text, const char* format, std::va_list arguments) ORVANE_PRINTF(2, 0);

  // Points an empty text at characters that a NUL follows, without owning them: they must outlive
  // it. What is assigned to it later is its own.
  static void Place(MSTR& text, std::string_view characters);

 private:
  friend class MSTR;

  static void Clear(MSTR& text);
  static void Free(MSTR& text);
  static char* Storage(MSTR& text) { return const_cast<char*>(text.text); }
  static char* Allocate(std::size_t capacity);
  static void Adopt(MSTR& text, char* storage, std::size_t capacity, std::size_t length);
};

}  // namespace ORVANE
