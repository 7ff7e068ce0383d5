// Counted objects and their holders.
//
// Ownership: a holder counts, it does not own: dropping the last reference destroys nothing.
// Threads: the count may be changed from any thread; one holder belongs to one thread at a time.
#pragma once

#include <atomic>

#include "host/api.h"
#include "host/mobj.h"

namespace ORVANE {

class ORVANE_API MREFOBJ : public MOBJ {
 public:
  void AddRef() { references_.fetch_add(1, std::memory_order_relaxed); }
  void SubRef() { references_.fetch_sub(1, std::memory_order_acq_rel); }
  int RefCount() const { return references_.load(std::memory_order_acquire); }

 private:
  std::atomic<int> references_ = 0;
};

class ORVANE_API MREFOBJREF {
 public:
  MREFOBJREF() = default;
  explicit MREFOBJREF(MREFOBJ* object) { *this = object; }
  MREFOBJREF(const MREFOBJREF& other) { *this = other.object_; }
  ~MREFOBJREF() { *this = nullptr; }

  MREFOBJREF& operator=(MREFOBJ* object) {
    if (object != nullptr) object->AddRef();
    if (object_ != nullptr) object_->SubRef();
    object_ = object;
    return *this;
  }
  MREFOBJREF& operator=(const MREFOBJREF& other) { return *this = other.object_; }

  MREFOBJ* Get() const { return object_; }

 private:
  MREFOBJ* object_ = nullptr;
};

}  // namespace ORVANE
