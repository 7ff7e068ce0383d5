// A text under construction that starts out on the stack.
//
// Reading an element needs two or three of them; most are short, and none may cost an allocation.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/api.h"
#include "text/bad_alloc.h"

template <std::size_t kInlineBytes>
class CWorkText {
 public:
  CWorkText() = default;
  CWorkText(const CWorkText&) = delete;
  CWorkText& operator=(const CWorkText&) = delete;
  ~CWorkText() {
    if (begin_ != inline_) std::free(begin_);
  }

  void Add(char c) {
    if (end_ == limit_) [[unlikely]] {
      Grow(1);
    }
    *end_++ = c;
  }
  void Add(std::string_view text) {
    if (static_cast<std::size_t>(limit_ - end_) < text.size()) [[unlikely]] {
      Grow(text.size());
    }
    std::memcpy(end_, text.data(), text.size());
    end_ += text.size();
  }
  void Clear() { end_ = begin_; }
  std::string_view View() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }

 private:
  ORVANE_COLD void Grow(std::size_t more) {
    const auto used = static_cast<std::size_t>(end_ - begin_);
    const std::size_t room = std::max(used * 2, used + more);
    auto* const roomy = static_cast<char*>(std::malloc(room));
    if (roomy == nullptr) throw CBadAlloc();
    std::memcpy(roomy, begin_, used);
    if (begin_ != inline_) std::free(begin_);
    begin_ = roomy;
    end_ = roomy + used;
    limit_ = roomy + room;
  }

  char* begin_ = inline_;  // Owned, unless it is the inline storage.
  char* end_ = inline_;
  char* limit_ = inline_ + kInlineBytes;
  char inline_[kInlineBytes];
};
