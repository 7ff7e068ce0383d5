#include "host/mstr.h"

#include <algorithm>
#include <cstdio>

namespace ORVANE {

constinit const MSTR::NULLSTRING MSTR::_NullString = {{0, 0}, {}};

const char* MBADALLOC::what() const noexcept { return "bad allocation"; }

char* MSTR::Allocate(std::size_t capacity) {
  if (capacity > kMaxLength) throw MBADALLOC();
  void* const block = std::malloc(sizeof(HEADER) + capacity + 1);
  if (block == nullptr) throw MBADALLOC();
  auto* const header = ::new (block) HEADER{0, static_cast<std::uint32_t>(capacity)};
  return reinterpret_cast<char*>(header + 1);
}

MSTR MSTR::Placed(std::string_view text, void* storage) {
  MSTR placed;
  if (text.size() <= kInlineLength) {
    placed.Assign(text);
    return placed;
  }
  if (text.size() > kMaxLength) throw MBADALLOC();
  auto* const header = ::new (storage) HEADER{static_cast<std::uint32_t>(text.size()), 0};
  auto* const characters = reinterpret_cast<char*>(header + 1);
  std::memcpy(characters, text.data(), text.size());
  characters[text.size()] = '\0';
  placed.word_ = reinterpret_cast<std::uintptr_t>(characters) | kIsBorrowed;
  return placed;
}

void MSTR::Reserve(std::size_t capacity) {
  if (capacity <= Capacity()) return;
  const std::uint32_t length = Length();
  char* const fresh = Allocate(std::max<std::size_t>(capacity, length));
  std::memcpy(fresh, Text(), length);
  Adopt(fresh, length);
}

void MSTR::Adopt(char* text, std::size_t length) {
  Free();
  word_ = reinterpret_cast<std::uintptr_t>(text);
  Header()->length = static_cast<std::uint32_t>(length);
  text[length] = '\0';
}

void MSTR::Renew(std::string_view text) {
  if (text.empty()) {
    Free();
    word_ = Null();
    return;
  }
  char* const fresh = Allocate(text.size());
  std::memcpy(fresh, text.data(), text.size());
  Adopt(fresh, text.size());
}

void MSTR::Append(std::string_view text) {
  if (text.empty()) return;
  const std::size_t length = Length();
  const std::size_t total = length + text.size();
  if (total <= Capacity()) {
    Put(length, text);
  } else {
    const std::size_t roomy = std::min<std::size_t>(length + length / 2 + 16, kMaxLength);
    char* const fresh = Allocate(std::max(total, roomy));
    std::memcpy(fresh, Text(), length);
    std::memcpy(fresh + length, text.data(), text.size());
    Adopt(fresh, total);
  }
}

void MSTR::Truncate(std::uint32_t length) {
  if (length >= Length()) return;
  if (OnHeap() || IsInline()) {
    Put(length, {});
  } else {
    Assign(View().substr(0, length));
  }
}

void MSTR::Format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  FormatList(format, arguments);
  va_end(arguments);
}

void MSTR::FormatList(const char* format, std::va_list arguments) {
  char small[512];
  std::va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(small, sizeof small, format, measured);
  va_end(measured);
  if (length < 0) throw MBADALLOC();
  const auto size = static_cast<std::size_t>(length);
  if (size < sizeof small) {
    Assign({small, size});
    return;
  }
  char* const fresh = Allocate(size);
  std::vsnprintf(fresh, size + 1, format, arguments);
  Adopt(fresh, size);
}

MSTR MSTR::Left(std::uint32_t count) const { return View().substr(0, count); }

void MSTR::Replace(std::string_view from, std::string_view to) {
  if (from.empty()) return;
  const std::string_view old = View();
  std::size_t found = old.find(from);
  if (found == std::string_view::npos) return;
  MSTR result;
  std::size_t copied = 0;
  for (; found != std::string_view::npos; found = old.find(from, copied)) {
    result.Append(old.substr(copied, found - copied));
    result.Append(to);
    copied = found + from.size();
  }
  result.Append(old.substr(copied));
  Swap(result);
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
  const char* at = Text();
  std::size_t left = Length();
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
