#include "schedule/blocks.h"

#include <algorithm>
#include <cstdlib>

#include "text/bad_alloc.h"

namespace {
constexpr std::size_t kSmallestBlock = 4096;
}

void CBlocks::AddBlock(std::size_t bytes) {
  const std::size_t size = std::max({bytes + sizeof(Block), total_ / 2, kSmallestBlock});
  Block* block = std::exchange(spare_, nullptr);
  if (block != nullptr && block->size < bytes + sizeof(Block)) {
    std::free(std::exchange(block, nullptr));
  }
  if (block == nullptr) {
    void* const storage = std::malloc(size);
    if (storage == nullptr) throw CBadAlloc();
    block = ::new (storage) Block{nullptr, size};
  }
  block->previous = last_;
  last_ = block;
  next_ = reinterpret_cast<char*>(block + 1);
  limit_ = reinterpret_cast<char*>(block) + block->size;
  total_ += block->size;
}

void CBlocks::DropBlocks(const Block* down_to) {
  while (last_ != down_to) {
    Block* const dropped = std::exchange(last_, last_->previous);
    total_ -= dropped->size;
    std::free(std::exchange(spare_, dropped));
  }
  limit_ = last_ != nullptr ? reinterpret_cast<char*>(last_) + last_->size : nullptr;
}

void CBlocks::Clear() {
  DropBlocks(nullptr);
  std::free(std::exchange(spare_, nullptr));
  next_ = nullptr;
}
