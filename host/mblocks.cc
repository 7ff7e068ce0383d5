#include "host/mblocks.h"

#include <algorithm>
#include <cstdlib>

namespace ORVANE {

namespace {
constexpr std::size_t kSmallestBlock = 4096;
}

struct MBLOCKS::BLOCK {
  BLOCK* previous;
};

void MBLOCKS::AddBlock(std::size_t bytes) {
  const std::size_t size = std::max({bytes + sizeof(BLOCK), total_ / 2, kSmallestBlock});
  void* const storage = std::malloc(size);
  if (storage == nullptr) throw MBADALLOC();
  last_ = ::new (storage) BLOCK{last_};
  next_ = static_cast<char*>(storage) + sizeof(BLOCK);
  left_ = size - sizeof(BLOCK);
  total_ += size;
}

void MBLOCKS::Clear() {
  while (last_ != nullptr) std::free(std::exchange(last_, last_->previous));
  next_ = nullptr;
  left_ = total_ = 0;
}

}  // namespace ORVANE
