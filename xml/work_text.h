// A text under construction that starts out on the stack.
//
// Reading an element needs two or three of them; most are short, and none may cost an allocation.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/mstr.h"

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
      Grow();
    }
    *end_++ = c;
  }
  void Clear() { end_ = begin_; }
  std::string_view View() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }

 private:
  ORVANE_COLD void Grow() {
    const auto used = static_cast<std::size_t>(end_ - begin_);
    auto* const roomy = static_cast<char*>(std::malloc(used * 2));
    if (roomy == nullptr) throw ORVANE::MBADALLOC();
    std::memcpy(roomy, begin_, used);
    if (begin_ != inline_) std::free(begin_);
    begin_ = roomy;
    end_ = roomy + used;
    limit_ = roomy + used * 2;
  }

  char* begin_ = inline_;  // Owned, unless it is the inline storage.
  char* end_ = inline_;
  char* limit_ = inline_ + kInlineBytes;
  char inline_[kInlineBytes];
};
