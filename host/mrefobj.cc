#include "host/mrefobj.h"

#include "host/internal/checks.h"

namespace ORVANE {

namespace {
// The count of an object that has been destroyed.
constexpr int kDestroyed = -0x40000000;
}  // namespace

MREFOBJ::MREFOBJ() : references_(0) {}

MREFOBJ::~MREFOBJ() {
  if (kChecksGuests) references_ = kDestroyed;
}

void MREFOBJ::AddRef() {
  const int before = references_.fetch_add(1, std::memory_order_relaxed);
  CheckGuest(before >= 0, "MREFOBJ::AddRef", "the object is used after it was given back");
}

void MREFOBJ::SubRef() {
  const int before = references_.fetch_sub(1, std::memory_order_acq_rel);
  CheckGuest(before > kDestroyed / 2, "MREFOBJ::SubRef",
             "the object is used after it was given back");
  CheckGuest(before != 0, "MREFOBJ::SubRef", "a reference is dropped that was never taken");
}

int MREFOBJ::RefCount() const { return references_.load(std::memory_order_acquire); }

MREFOBJREF::MREFOBJREF() : object_(nullptr) {}
MREFOBJREF::MREFOBJREF(MREFOBJ* object) : MREFOBJREF() { *this = object; }
MREFOBJREF::MREFOBJREF(const MREFOBJREF& other) : MREFOBJREF() { *this = other.object_; }
MREFOBJREF::~MREFOBJREF() { *this = nullptr; }

MREFOBJREF& MREFOBJREF::operator=(MREFOBJ* object) {
  if (object != nullptr) object->AddRef();
  if (object_ != nullptr) object_->SubRef();
  object_ = object;
  return *this;
}

MREFOBJREF& MREFOBJREF::operator=(const MREFOBJREF& other) { return *this = other.object_; }

MREFOBJ* MREFOBJREF::Get() const { return object_; }

}  // namespace ORVANE
