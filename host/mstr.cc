#include "host/mstr.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "host/internal/texts.h"

namespace ORVANE {

const char MSTR::_NullString[1] = {};

char* TEXTS::Allocate(std::size_t capacity) {
  if (capacity > kMaxLength) throw std::bad_alloc();
  void* const storage = std::malloc(capacity + 1);
  if (storage == nullptr) throw std::bad_alloc();
  return static_cast<char*>(storage);
}

void TEXTS::Free(MSTR& text) {
  if (text.capacity_ != 0) std::free(Storage(text));
}

void TEXTS::Clear(MSTR& text) {
  text.text = MSTR::_NullString;
  text.length = text.capacity_ = 0;
}

void TEXTS::Adopt(MSTR& text, char* storage, std::size_t capacity, std::size_t length) {
  Free(text);
  storage[length] = '\0';
  text.text = storage;
  text.length = static_cast<std::uint32_t>(length);
  text.capacity_ = static_cast<std::uint32_t>(capacity);
}

void TEXTS::Assign(MSTR& text, std::string_view characters) {
  const std::size_t length = characters.size();
  if (length <= text.capacity_ && text.capacity_ != 0) {
    if (length != 0) std::memmove(Storage(text), characters.data(), length);
    Storage(text)[length] = '\0';
    text.length = static_cast<std::uint32_t>(length);
  } else if (length == 0) {
    Clear(text);
  } else {
    char* const fresh = Allocate(length);
    std::memcpy(fresh, characters.data(), length);
    Adopt(text, fresh, length, length);
  }
}

void TEXTS::Append(MSTR& text, std::string_view characters) {
  if (characters.empty()) return;
  const std::size_t length = text.length;
  const std::size_t total = length + characters.size();
  if (total <= text.capacity_) {
    std::memmove(Storage(text) + length, characters.data(), characters.size());
    Storage(text)[total] = '\0';
    text.length = static_cast<std::uint32_t>(total);
  } else {
    const std::size_t roomy = std::min<std::size_t>(length + length / 2 + 16, kMaxLength);
    const std::size_t capacity = std::max(total, roomy);
    char* const fresh = Allocate(capacity);
    std::memcpy(fresh, text.text, length);
    std::memcpy(fresh + length, characters.data(), characters.size());
    Adopt(text, fresh, capacity, total);
  }
}

void TEXTS::Truncate(MSTR& text, std::uint32_t length) {
  if (length < text.length) Assign(text, View(text).substr(0, length));
}

void TEXTS::Reserve(MSTR& text, std::size_t capacity) {
  if (capacity <= text.capacity_) return;
  const std::size_t length = text.length;
  capacity = std::max(capacity, length);
  char* const fresh = Allocate(capacity);
  std::memcpy(fresh, text.text, length);
  Adopt(text, fresh, capacity, length);
}

void TEXTS::Swap(MSTR& a, MSTR& b) {
  std::swap(a.text, b.text);
  std::swap(a.length, b.length);
  std::swap(a.capacity_, b.capacity_);
}

void TEXTS::Place(MSTR& text, std::string_view characters) {
  if (characters.empty()) return;
  text.text = characters.data();
  text.length = static_cast<std::uint32_t>(characters.size());
}

void TEXTS::Format(MSTR& text, const char* format, std::va_list arguments) {
  char small[512];
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(small, sizeof small, format, measured);
  va_end(measured);
  if (length < 0) throw std::bad_alloc();
  const auto size = static_cast<std::size_t>(length);
  if (size < sizeof small) {
    Assign(text, {small, size});
    return;
  }
  char* const fresh = Allocate(size);
  std::vsnprintf(fresh, size + 1, format, arguments);
  Adopt(text, fresh, size, size);
}

MSTR::MSTR() : text(_NullString), length(0), capacity_(0) {}

MSTR::MSTR(const char* characters) : MSTR() { *this = characters; }

MSTR::MSTR(const MSTR& other) : MSTR() { *this = other; }

MSTR::~MSTR() { TEXTS::Free(*this); }

MSTR& MSTR::operator=(const char* characters) {
  TEXTS::Assign(*this, characters != nullptr ? characters : "");
  return *this;
}

MSTR& MSTR::operator=(const MSTR& other) {
  TEXTS::Assign(*this, TEXTS::View(other));
  return *this;
}

MSTR& MSTR::operator+=(char character) {
  TEXTS::Append(*this, {&character, 1});
  return *this;
}

MSTR& MSTR::operator+=(const char* characters) {
  TEXTS::Append(*this, characters);
  return *this;
}

MSTR& MSTR::operator+=(const MSTR& other) {
  TEXTS::Append(*this, TEXTS::View(other));
  return *this;
}

void MSTR::Format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  TEXTS::Format(*this, format, arguments);
  va_end(arguments);
}

MSTR MSTR::Left(std::uint32_t count) const {
  MSTR left;
  TEXTS::Assign(left, TEXTS::View(*this).substr(0, count));
  return left;
}

void MSTR::Replace(const char* from, const char* to) {
  const std::string_view wanted = from;
  const std::string_view old = TEXTS::View(*this);
  std::size_t found = wanted.empty() ? old.npos : old.find(wanted);
  if (found == old.npos) return;
  MSTR result;
  std::size_t copied = 0;
  for (; found != old.npos; found = old.find(wanted, copied)) {
    TEXTS::Append(result, old.substr(copied, found - copied));
    TEXTS::Append(result, to);
    copied = found + wanted.size();
  }
  TEXTS::Append(result, old.substr(copied));
  TEXTS::Swap(*this, result);
}

std::uint32_t MSTR::Id() const {
  // Eight bytes a step, in two sums that do not wait for each other: a description of 250 bytes
  // takes 25 ns instead of 60. The last step's multiplications and shifts spread every input bit
  // over the whole result, so that sums of values of near-equal texts stay apart.
  constexpr std::uint64_t kStep = 0x9FB21C651E98DF25u;
  constexpr std::uint64_t kMix = 0xD6E8FEB86659FD93u;
  const auto take = [](std::uint64_t& hash, const char* at, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, count);
    hash = (hash ^ word) * kStep;
    hash ^= hash >> 29;
  };
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const char* at = text;
  std::size_t left = length;
  std::uint64_t hash = left * kMix + 0x2545F4914F6CDD1Du;
  std::uint64_t second = hash ^ kMix;
  for (; left >= 2 * kWord; at += 2 * kWord, left -= 2 * kWord) {
    take(hash, at, kWord);
    take(second, at + kWord, kWord);
  }
  if (left >= kWord) {
    take(hash, at, kWord);
    at += kWord;
    left -= kWord;
  }
  if (left != 0) take(second, at, left);
  hash = (hash ^ (hash >> 32)) * kMix + second;
  hash = (hash ^ (hash >> 32)) * kMix;
  hash = (hash ^ (hash >> 32)) * kMix;
  return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

}  // namespace ORVANE
