#include "tools/epgcache/write/text_store.h"

#include <algorithm>
#include <cstring>

namespace epgcache {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

}  // namespace

std::uint32_t TextStore::Add(std::string_view text) {
  const auto found = numbers_.find(text);
  if (found != numbers_.end()) return found->second;
  const auto number = static_cast<std::uint32_t>(texts_.size());
  texts_.push_back(Keep(text));
  numbers_.emplace(texts_.back(), number);
  return number;
}

std::string_view TextStore::Keep(std::string_view text) {
  if (text.empty()) return {};
  if (text.size() > room_) {
    room_ = std::max(kBlockBytes, text.size());
    // Not set to zero: what is not written to is not touched.
    blocks_.emplace_back(new char[room_]);
    free_ = blocks_.back().get();
  }
  std::memcpy(free_, text.data(), text.size());
  const std::string_view kept(free_, text.size());
  free_ += text.size();
  room_ -= text.size();
  return kept;
}

}  // namespace epgcache
