#include "schedule/schedule_memory.h"

#include <algorithm>
#include <cstdlib>

namespace {
constexpr std::size_t kSmallestBlock = 4096;
}

struct CBlockChain::Block {
  Block* previous;
};

void CBlockChain::AddBlock(std::size_t bytes) {
  const std::size_t size = std::max({bytes + sizeof(Block), total_ / 2, kSmallestBlock});
  void* const storage = std::malloc(size);
  if (storage == nullptr) throw ORVANE::MBADALLOC();
  last_ = ::new (storage) Block{last_};
  next_ = static_cast<char*>(storage) + sizeof(Block);
  left_ = size - sizeof(Block);
  total_ += size;
}

void CBlockChain::Clear() {
  while (last_ != nullptr) std::free(std::exchange(last_, last_->previous));
  next_ = nullptr;
  left_ = total_ = 0;
}
