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
  MREFOBJ();
  ~MREFOBJ() override;

  void AddRef();         // [any]
  void SubRef();         // [any]
  int RefCount() const;  // [any]

 private:
  std::atomic<int> references_;
};

class ORVANE_API MREFOBJREF {
 public:
  // Refers to nothing.
  MREFOBJREF();
  explicit MREFOBJREF(MREFOBJ* object);
  MREFOBJREF(const MREFOBJREF& other);
  ~MREFOBJREF();

  MREFOBJREF& operator=(MREFOBJ* object);
  MREFOBJREF& operator=(const MREFOBJREF& other);

  MREFOBJ* Get() const;

 private:
  MREFOBJ* object_;
};

}  // namespace ORVANE
