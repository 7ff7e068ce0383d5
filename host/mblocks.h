// Storage for many small things that live and go together.
//
// Parts are taken from blocks that grow with what has been given out, so that little takes little
// and much takes few blocks. A part costs an addition, and giving all of them back a few calls.
//
// Ownership: the blocks belong to this object; what stands in them ends with it, without a
//   destructor.
// Threads: like any container's.
// Errors: MBADALLOC.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "host/api.h"
#include "host/mstr.h"

namespace ORVANE {

class ORVANE_API MBLOCKS {
 public:
  MBLOCKS() = default;
  MBLOCKS(const MBLOCKS&) = delete;
  MBLOCKS& operator=(const MBLOCKS&) = delete;
  ~MBLOCKS() { Clear(); }

  // Aligned to 8 bytes.
  void* Allocate(std::size_t bytes) {
    const std::size_t rounded = (bytes + 7) / 8 * 8;
    if (left_ < rounded) [[unlikely]] {
      AddBlock(rounded);
    }
    left_ -= rounded;
    return std::exchange(next_, next_ + rounded);
  }

  template <typename Object, typename... Arguments>
  Object* Make(Arguments&&... arguments) {
    static_assert(alignof(Object) <= 8);
    return ::new (Allocate(sizeof(Object))) Object(std::forward<Arguments>(arguments)...);
  }

  // A copy of the text that stands here, if it is not so short that it needs no storage.
  MSTR Keep(std::string_view text) {
    const std::size_t bytes = MSTR::PlacedBytes(text.size());
    return bytes != 0 ? MSTR::Placed(text, Allocate(bytes)) : MSTR(text);
  }

  // Gives everything back.
  void Clear();

 private:
  struct BLOCK;

  ORVANE_COLD void AddBlock(std::size_t bytes);

  char* next_ = nullptr;
  std::size_t left_ = 0;  // bytes, from next_ on
  std::size_t total_ = 0;
  BLOCK* last_ = nullptr;  // Owned, with those before it.
};

}  // namespace ORVANE
