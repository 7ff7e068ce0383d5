#include "host/mobj.h"

#include <cstring>
#include <mutex>

namespace ORVANE {

namespace {
// Both need no set-up at run time, so records of any library find them ready, whatever the order
// in which static objects are made, and still there when the last record goes.
constinit std::mutex registry_mutex;
constinit const MOBJ::SREC* registry_head = nullptr;
}  // namespace

MOBJ::SREC::SREC(const char* class_name, FACTORY factory)
    : class_name_(class_name), factory_(factory) {
  const std::lock_guard lock(registry_mutex);
  next_ = registry_head;
  registry_head = this;
}

MOBJ::SREC::~SREC() {
  const std::lock_guard lock(registry_mutex);
  const SREC** link = &registry_head;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
}

const MOBJ::SREC* MOBJ::SREC::Find(const char* class_name) {
  const std::lock_guard lock(registry_mutex);
  const SREC* record = registry_head;
  while (record != nullptr && std::strcmp(record->class_name_, class_name) != 0) {
    record = record->next_;
  }
  return record;
}

const MOBJ::SREC* MOBJ::_GetSerializeRecord() const { return nullptr; }
bool MOBJ::Read(MBUFFER& /*buffer*/) { return true; }
bool MOBJ::Write(MBUFFER& /*buffer*/) const { return true; }
void MOBJ::Release() { delete this; }
bool MOBJ::OnMessage(int /*message*/, void* /*data*/) { return false; }

}  // namespace ORVANE
