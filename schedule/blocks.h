// Storage for many small things that live and go together.
//
// Parts are taken from blocks that grow with what has been given out, so that little takes little
// and much takes few blocks. A part costs an addition, and giving all of them back a few calls.
//
// Ownership: the blocks belong to this object; what stands in them ends with it, without a
//   destructor.
// Threads: like any container's.
// Errors: CBadAlloc.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

class CBlocks {
 private:
  struct Block;

 public:
  // A place to wind back to.
  struct Mark {
    Block* block;
    char* next;
  };

  CBlocks() = default;
  CBlocks(const CBlocks&) = delete;
  CBlocks& operator=(const CBlocks&) = delete;
  ~CBlocks() { Clear(); }

  // Of no particular alignment.
  char* Allocate(std::size_t bytes) {
    if (static_cast<std::size_t>(limit_ - next_) < bytes) [[unlikely]] {
      AddBlock(bytes);
    }
    return std::exchange(next_, next_ + bytes);
  }

  // An object by itself: a collection holds objects of one type alone, so that all are aligned.
  template <typename Object>
  Object* Make() {
    static_assert(alignof(Object) <= kAlignment);
    return ::new (Allocate(sizeof(Object))) Object;
  }

  Mark GetMark() const { return {last_, next_}; }

  // Takes back all that has been given out since `mark`, to be given out again.
  // REQUIRES: nothing has been wound back to an earlier mark in between.
  void WindBack(const Mark& mark) {
    if (last_ != mark.block) [[unlikely]] {
      DropBlocks(mark.block);
    }
    next_ = mark.next;
  }

  // Gives everything back.
  void Clear();

 private:
  static constexpr std::size_t kAlignment = 8;

  struct alignas(kAlignment) Block {
    Block* previous;
    std::size_t size;  // bytes, this header included
  };

  void AddBlock(std::size_t bytes);
  void DropBlocks(const Block* down_to);

  char* next_ = nullptr;
  char* limit_ = nullptr;
  std::size_t total_ = 0;   // bytes, of the blocks in use
  Block* last_ = nullptr;   // Owned, with those before it.
  Block* spare_ = nullptr;  // Owned. The last one that was wound back, for the next to come.
};
