// The engine's text: 8-bit characters, counted and NUL-terminated, never null.
//
// Units: lengths and positions are bytes.
// Ownership: a text owns its characters; a view or pointer that it returns lives until the text is
//   changed or destroyed.
// Threads: like any value: readers may share one, a writer needs it alone.
// Errors: a text that cannot grow throws MBADALLOC and stays as it was.
#pragma once

#include <cstdarg>
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

// Layout: one pointer to the characters, with length and capacity in front of them, so that the
// many empty texts of a schedule cost a pointer each and nothing on the heap.
class ORVANE_API MSTR {
 public:
  struct HEADER {
    std::uint32_t length;
    std::uint32_t capacity;  // 0 in the shared empty text alone
  };
  struct NULLSTRING {
    HEADER header;
    char characters[8];
  };
  // What every empty text points to. Never written.
  static const NULLSTRING _NullString;

  // No text grows beyond this many bytes.
  static constexpr std::uint32_t kMaxLength = 0x3fffffff;

  MSTR() noexcept : text_(Null()) {}
  MSTR(const char* text) : MSTR(std::string_view(text != nullptr ? text : "")) {}
  MSTR(std::string_view text) : text_(Null()) { Assign(text); }
  MSTR(const MSTR& other) : text_(Null()) { Assign(other.View()); }
  MSTR(MSTR&& other) noexcept : text_(std::exchange(other.text_, Null())) {}
  virtual ~MSTR() { Free(); }

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
    std::swap(text_, other.text_);
    return *this;
  }

  const char* Text() const { return text_; }
  std::uint32_t Length() const { return Header()->length; }
  bool IsEmpty() const { return Length() == 0; }
  std::string_view View() const { return {text_, Length()}; }

  // Allocates exactly what `text` needs, or keeps the storage that is large enough. `text` may be
  // a part of this text. An empty text gives the storage back.
  void Assign(std::string_view text);

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
  static char* Null() { return const_cast<char*>(_NullString.characters); }
  const HEADER* Header() const { return reinterpret_cast<const HEADER*>(text_) - 1; }
  HEADER* Header() { return reinterpret_cast<HEADER*>(text_) - 1; }
  void Free() {
    if (text_ != Null()) std::free(Header());
  }
  // Fresh storage for `capacity` characters, holding the first `kept` of this text; the old
  // storage is left to the caller.
  char* Allocate(std::size_t capacity, std::size_t kept) const;

  char* text_;  // Owned, unless it is the shared empty text.
};

static_assert(sizeof(MSTR) <= 24);

}  // namespace ORVANE
