// Texts kept once each.
//
// Ownership: a store owns its texts; views of them live as long as it does.
// Threads: one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "schedule/key_hash.h"

namespace epgcache {

class TextStore {
 public:
  TextStore() = default;
  TextStore(const TextStore&) = delete;
  TextStore& operator=(const TextStore&) = delete;

  // The number of this text, counted from 0 in order of arrival.
  std::uint32_t Add(std::string_view text);

  std::string_view operator[](std::uint32_t number) const { return texts_[number]; }
  std::size_t size() const { return texts_.size(); }

 private:
  std::string_view Keep(std::string_view text);

  struct Hash {
    std::size_t operator()(std::string_view text) const { return KeyHash(text); }
  };

  std::vector<std::unique_ptr<char[]>> blocks_;
  char* free_ = nullptr;  // in the last block
  std::size_t room_ = 0;
  std::vector<std::string_view> texts_;
  std::unordered_map<std::string_view, std::uint32_t, Hash> numbers_;
};

}  // namespace epgcache
