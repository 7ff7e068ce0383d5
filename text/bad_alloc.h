// Out of memory, or a text longer than any may be.
#pragma once

#include <cstddef>
#include <new>

// Its message is the same on every system; the library's own is not.
class CBadAlloc final : public std::bad_alloc {
 public:
  const char* what() const noexcept override { return "bad allocation"; }
};

// No text of the system grows beyond this many bytes.
inline constexpr std::size_t kLongestText = 0x3fffffff;
