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

  void Add(char c) { CWriter(*this).Add(c); }
  void Clear() { end_ = begin_; }
  std::string_view View() const {
    return {reinterpret_cast<const char*>(begin_), static_cast<std::size_t>(end_ - begin_)};
  }

  // Adds many characters. It holds the text's ends meanwhile, for a loop to keep in registers; the
  // text has them back when the writer ends.
  class CWriter {
   public:
    explicit CWriter(CWorkText& text) : text_(text), end_(text.end_), limit_(text.limit_) {}
    CWriter(const CWriter&) = delete;
    CWriter& operator=(const CWriter&) = delete;
    ~CWriter() { text_.end_ = end_; }

    void Add(char c) {
      if (end_ == limit_) [[unlikely]] {
        text_.end_ = end_;
        text_.Grow();
        end_ = text_.end_;
        limit_ = text_.limit_;
      }
      *end_++ = static_cast<char8_t>(c);
    }

   private:
    CWorkText& text_;
    char8_t* end_;
    char8_t* limit_;
  };

 private:
  ORVANE_COLD void Grow() {
    const auto used = static_cast<std::size_t>(end_ - begin_);
    auto* const roomy = static_cast<char8_t*>(std::malloc(used * 2));
    if (roomy == nullptr) throw ORVANE::MBADALLOC();
    std::memcpy(roomy, begin_, used);
    if (begin_ != inline_) std::free(begin_);
    begin_ = roomy;
    end_ = roomy + used;
    limit_ = roomy + used * 2;
  }

  char8_t* begin_ = inline_;  // Owned, unless it is the inline storage.
  char8_t* end_ = inline_;
  char8_t* limit_ = inline_ + kInlineBytes;
  char8_t inline_[kInlineBytes];
};
