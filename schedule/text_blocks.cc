#include "schedule/text_blocks.h"

#include <cstring>

#include "text/bad_alloc.h"

namespace {

// The first and the last bytes, which may overlap, and the length.
std::size_t Mix(std::string_view text) {
  const auto read = [&text](auto word, std::size_t at) {
    std::memcpy(&word, text.data() + at, sizeof word);
    return std::uint64_t{word};
  };
  std::uint64_t mixed = text.size();
  if (text.size() >= 8) {
    mixed += read(std::uint64_t{0}, 0) ^ (read(std::uint64_t{0}, text.size() - 8) << 1);
  } else if (text.size() >= 4) {
    mixed += read(std::uint32_t{0}, 0) ^ (read(std::uint32_t{0}, text.size() - 4) << 32);
  } else {
    for (const char c : text) mixed = mixed << 8 | static_cast<unsigned char>(c);
  }
  return static_cast<std::size_t>((mixed * 0x9FB21C651E98DF25u) >> 56);
}

}  // namespace

CText CTextBlocks::Store(std::string_view text) {
  if (text.size() > kLongestText) throw CBadAlloc();
  return CText::Store(text, blocks_.Allocate(CText::StoredBytes(text)));
}

CText CTextBlocks::KeepShort(std::string_view text) {
  const std::size_t place = Mix(text);
  CText& remembered = remembered_[place];
  if (remembered.View() != text) {
    remembered = Store(text);
    if (remembered_since_mark_ < kMostNoted) {
      noted_[remembered_since_mark_] = static_cast<std::uint8_t>(place);
    }
    ++remembered_since_mark_;
  }
  return remembered;
}

void CTextBlocks::WindBack(const Mark& mark) {
  if (mark.serial == serial_ && remembered_since_mark_ <= kMostNoted) {
    for (std::size_t i = 0; i < remembered_since_mark_; ++i) remembered_[noted_[i]] = CText();
  } else {
    remembered_.fill(CText());
  }
  remembered_since_mark_ = 0;
  blocks_.WindBack(mark.place);
}

void CTextBlocks::Clear() {
  remembered_.fill(CText());
  blocks_.Clear();
}
