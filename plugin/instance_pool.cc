#include "plugin/instance_pool.h"

#include <new>
#include <utility>

namespace {

class CLock {
 public:
  explicit CLock(ORVANE::MUTEX& mutex) : mutex_(mutex) { mutex_.Enter(); }
  CLock(const CLock&) = delete;
  CLock& operator=(const CLock&) = delete;
  ~CLock() { mutex_.Leave(); }

 private:
  ORVANE::MUTEX& mutex_;
};

}  // namespace

bool CInstancePool::AddBlock() {
  auto* const block = new (std::nothrow) Block;
  if (block == nullptr) return false;
  block->next = std::exchange(blocks_, block);
  for (Instance& instance : block->instances) {
    instance.next_free = std::exchange(free_, &instance);
  }
  return true;
}

CEPGBrowser::MSS* CInstancePool::Take() {
  const CLock lock(mutex_);
  if (free_ == nullptr && !AddBlock()) return nullptr;
  return std::exchange(free_, free_->next_free);
}

void CInstancePool::GiveBack(CEPGBrowser::MSS* instance) {
  auto* const free = static_cast<Instance*>(instance);
  const CLock lock(mutex_);
  free->next_free = std::exchange(free_, free);
}

void CInstancePool::FreeBlocks() {
  free_ = nullptr;
  while (blocks_ != nullptr) delete std::exchange(blocks_, blocks_->next);
}
