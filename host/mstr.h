// The engine's text: 8-bit characters, counted and NUL-terminated, never null.
//
// Units: lengths are bytes.
// Ownership: a text owns its characters; what it is made from is copied.
// Threads: like any value: readers may share one, a writer needs it alone.
// Errors: a text that cannot grow, or would outgrow 1 GiB, throws std::bad_alloc and stays as it
//   was.
#pragma once

#include <cstdint>

#include "host/api.h"

namespace ORVANE {

class ORVANE_API MSTR {
 public:
  // What every empty text's characters are. Never written.
  static const char _NullString[1];

  MSTR();
  // Up to the NUL; null counts as empty.
  MSTR(const char* characters);
  MSTR(const MSTR& other);
  virtual ~MSTR();

  // `characters` may be a part of this text, here and below.
  MSTR& operator=(const char* characters);
  MSTR& operator=(const MSTR& other);
  MSTR& operator+=(char character);
  MSTR& operator+=(const char* characters);
  MSTR& operator+=(const MSTR& other);

  // Replaces the contents by printf-style output. The arguments may point into this text.
  void Format(const char* format, ...) ORVANE_PRINTF(2, 3);

  // The first `count` characters, fewer when there are fewer.
  MSTR Left(std::uint32_t count) const;

  // Turns every occurrence of `from` into `to`, left to right; an empty `from` changes nothing.
  void Replace(const char* from, const char* to);

  // A hash of the characters alone. Callers add several of them to make a key, so every bit of a
  // value depends on every character.
  std::uint32_t Id() const;

  // To be read. They change when the text is changed by the operations above, and only then.
  const char* text;  // `length` characters, and a NUL after them
  std::uint32_t length;

 private:
  friend struct TEXTS;

  std::uint32_t capacity_;  // of this text's own storage; 0 when it has none
};

}  // namespace ORVANE
