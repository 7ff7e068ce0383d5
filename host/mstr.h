// The engine's text: 8-bit characters, counted and NUL-terminated, never null.
//
// Units: lengths and positions are bytes.
// Ownership: a text owns its characters, but for placed ones (see `Placed`); a view or pointer that
//   it returns lives until the text is changed or destroyed.
// Threads: like any value: readers may share one, a writer needs it alone.
// Errors: a text that cannot grow throws MBADALLOC and stays as it was.
#pragma once

#include <bit>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "host/api.h"

namespace ORVANE {

// Memory has run out. Its message is "bad allocation" on every platform.
class ORVANE_API MBADALLOC : public std::bad_alloc {
 public:
  const char* what() const noexcept override;
};

// A schedule holds millions of texts, most of them empty or a few characters long. So a text is one
// word beside its virtual table: a pointer to the characters, which have length and capacity in
// front of them, or, for up to six characters, the characters themselves. Longer texts are on the
// heap, or stand in storage that a maker of many texts has placed them in.
class ORVANE_API MSTR {
 public:
  struct HEADER {
    std::uint32_t length;
    std::uint32_t capacity;
  };
  struct alignas(8) NULLSTRING {
    HEADER header;
    char characters[8];
  };
  // What every empty text points to. Never written.
  static const NULLSTRING _NullString;

  // No text grows beyond this many bytes.
  static constexpr std::uint32_t kMaxLength = 0x3fffffff;

  MSTR() noexcept : word_(Null()) {}
  MSTR(const char* text) : MSTR(std::string_view(text != nullptr ? text : "")) {}
  MSTR(std::string_view text) : MSTR() { Assign(text); }
  MSTR(const MSTR& other) : MSTR() { Assign(other.View()); }
  // A text moved from holds what the other one held before, to be used again.
  MSTR(MSTR&& other) noexcept : MSTR() { Swap(other); }
  virtual ~MSTR() { Free(); }

  // A text that does not own its characters: they stand in `storage`, PlacedBytes of them, aligned
  // to 8, and the text must not outlive it, nor the one that it is moved to. Copies and changed
  // texts own theirs as ever. Short texts need no storage.
  static std::size_t PlacedBytes(std::size_t length) {
    return length <= kInlineLength ? 0 : (sizeof(HEADER) + length + 1 + 7) / 8 * 8;
  }
  // Throws MBADALLOC for a text that is too long.
  static MSTR Placed(std::string_view text, void* storage);
  // A second text on the characters of a placed one; of any other text a copy.
  MSTR Alias() const {
    MSTR alias;
    if (OnHeap()) {
      alias.Assign(View());
    } else {
      alias.word_ = word_;
    }
    return alias;
  }

  MSTR& operator=(const char* text) {
    Assign(text != nullptr ? text : "");
    return *this;
  }
  MSTR& operator=(std::string_view text) {
    Assign(text);
    return *this;
  }
  MSTR& operator=(const MSTR& other) {
    Assign(other.View());
    return *this;
  }
  MSTR& operator=(MSTR&& other) noexcept {
    Swap(other);
    return *this;
  }

  const char* Text() const { return IsInline() ? InlineText() : Pointer(); }
  std::uint32_t Length() const { return IsInline() ? InlineLength() : Header()->length; }
  bool IsEmpty() const { return Length() == 0; }
  // The text has storage of its own on the heap: neither placed, nor so short that it needs none.
  bool OnHeap() const { return (word_ & (kIsInline | kIsBorrowed)) == 0; }
  std::string_view View() const { return {Text(), Length()}; }

  // Allocates exactly what `text` needs, or keeps the storage that is large enough. `text` may be
  // a part of this text. An empty text gives the storage back.
  void Assign(std::string_view text) {
    if (!text.empty() && text.size() <= Capacity()) {
      Put(0, text);
    } else {
      Renew(text);
    }
  }

  // Storage grows by half at least. `text` may be a part of this text.
  void Append(std::string_view text);
  MSTR& operator+=(char character) {
    Append({&character, 1});
    return *this;
  }
  MSTR& operator+=(const char* text) {
    Append(text);
    return *this;
  }
  MSTR& operator+=(std::string_view text) {
    Append(text);
    return *this;
  }
  MSTR& operator+=(const MSTR& other) {
    Append(other.View());
    return *this;
  }

  // Cuts the text to its first `length` bytes; a shorter text stays as it is.
  void Truncate(std::uint32_t length);

  // Empties the text for the next one to come and keeps its storage, unless that is large.
  void Reset() {
    if (!OnHeap()) {
      word_ = Null();
    } else if (Header()->capacity <= kWorthKeeping) {
      Header()->length = 0;
      *Pointer() = '\0';
    } else {
      Renew({});
    }
  }

  // Makes room for `capacity` bytes.
  void Reserve(std::size_t capacity);

  // Replaces the contents by printf-style output. The arguments may point into this text.
  void Format(const char* format, ...) ORVANE_PRINTF(2, 3);
  void FormatList(const char* format, std::va_list arguments) ORVANE_PRINTF(2, 0);

  // The first `count` characters, fewer when there are fewer.
  MSTR Left(std::uint32_t count) const;

  // Turns every occurrence of `from` into `to`, left to right; an empty `from` changes nothing.
  void Replace(std::string_view from, std::string_view to);

  // A hash of the characters alone. Callers add several of them to make a key, so every bit of a
  // value depends on every character.
  std::uint32_t Id() const;

  friend bool operator==(const MSTR& a, const MSTR& b) { return a.View() == b.View(); }
  friend bool operator==(const MSTR& a, std::string_view b) { return a.View() == b; }
  friend bool operator==(const MSTR& a, const char* b) { return a.View() == b; }

 private:
  // The word's lowest bits tell its forms apart: characters that a pointer leads to are aligned.
  static constexpr std::uintptr_t kIsInline = 1;    // a byte with the length, characters and a NUL
  static constexpr std::uintptr_t kIsBorrowed = 2;  // a pointer to characters of somebody else's
  static constexpr std::uint32_t kInlineLength =
      std::endian::native == std::endian::little && sizeof(std::uintptr_t) == 8 ? 6 : 0;

  static std::uintptr_t Null() {
    return reinterpret_cast<std::uintptr_t>(_NullString.characters) | kIsBorrowed;
  }

  bool IsInline() const { return (word_ & kIsInline) != 0; }
  std::uint32_t InlineLength() const { return static_cast<std::uint32_t>(word_ & 0xff) >> 1; }
  char* InlineText() { return reinterpret_cast<char*>(&word_) + 1; }
  const char* InlineText() const { return reinterpret_cast<const char*>(&word_) + 1; }

  // Storage that a text keeps for the next one, in bytes.
  static constexpr std::uint32_t kWorthKeeping = 4096;

  // Of a text that is not inline.
  char* Pointer() const { return reinterpret_cast<char*>(word_ & ~kIsBorrowed); }
  HEADER* Header() const { return reinterpret_cast<HEADER*>(Pointer()) - 1; }

  std::uint32_t Capacity() const { return OnHeap() ? Header()->capacity : kInlineLength; }

  void Free() {
    if (OnHeap()) std::free(Header());
  }
  void Swap(MSTR& other) noexcept { std::swap(word_, other.word_); }
  // Fresh heap storage for `capacity` characters; length and characters are the caller's to set.
  static char* Allocate(std::size_t capacity);
  // Takes fresh storage that holds `length` characters in place of what there was.
  void Adopt(char* text, std::size_t length);
  // Writes `text` behind the first `kept` characters and ends there. REQUIRES: it fits.
  void Put(std::size_t kept, std::string_view text) {
    const std::size_t length = kept + text.size();
    if (OnHeap()) {
      char* const characters = Pointer();
      if (!text.empty()) std::memmove(characters + kept, text.data(), text.size());
      characters[length] = '\0';
      Header()->length = static_cast<std::uint32_t>(length);
    } else {
      if (!text.empty()) std::memmove(InlineText() + kept, text.data(), text.size());
      InlineText()[length] = '\0';
      word_ = (word_ & ~std::uintptr_t{0xff}) | length << 1 | kIsInline;
    }
  }
  // Takes fresh storage for the text, or none for an empty one.
  void Renew(std::string_view text);

  std::uintptr_t word_;  // Owned, where it points to the heap.
};

static_assert(sizeof(MSTR) <= 24);

}  // namespace ORVANE
