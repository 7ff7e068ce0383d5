#include "host/mobj.h"

#include <atomic>
#include <thread>

#include "host/internal/registry.h"

namespace ORVANE {

namespace {
constinit std::atomic_flag registry_busy = {};
constinit const MOBJ::SREC* classes_head = nullptr;
}  // namespace

REGISTRYLOCK::REGISTRYLOCK() {
  while (registry_busy.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
}

REGISTRYLOCK::~REGISTRYLOCK() { registry_busy.clear(std::memory_order_release); }

void CLASSES::Add(const MOBJ::SREC& record) {
  const REGISTRYLOCK lock;
  record.next_ = classes_head;
  classes_head = &record;
}

void CLASSES::Remove(const MOBJ::SREC& record) {
  const REGISTRYLOCK lock;
  const MOBJ::SREC** link = &classes_head;
  while (*link != &record) link = &(*link)->next_;
  *link = record.next_;
}

const MOBJ::SREC* CLASSES::Find(std::string_view class_name) {
  const REGISTRYLOCK lock;
  const MOBJ::SREC* record = classes_head;
  while (record != nullptr && class_name != record->class_name_) record = record->next_;
  return record;
}

std::vector<const MOBJ::SREC*> CLASSES::Since(const MOBJ::SREC* head) {
  const REGISTRYLOCK lock;
  std::vector<const MOBJ::SREC*> records;
  for (const MOBJ::SREC* record = classes_head; record != nullptr && record != head;
       record = record->next_) {
    records.push_back(record);
  }
  return records;
}

const MOBJ::SREC* CLASSES::Head() {
  const REGISTRYLOCK lock;
  return classes_head;
}

MOBJ::SREC::SREC(const char* class_name, FACTORY factory)
    : class_name_(class_name), factory_(factory), next_(nullptr) {
  CLASSES::Add(*this);
}

MOBJ::SREC::~SREC() { CLASSES::Remove(*this); }

MOBJ::MOBJ() = default;
MOBJ::~MOBJ() = default;
const MOBJ::SREC* MOBJ::_GetSerializeRecord() const { return nullptr; }
bool MOBJ::Read(MBUFFER& /*buffer*/) { return true; }
bool MOBJ::Write(MBUFFER& /*buffer*/) const { return true; }
void MOBJ::Release() { delete this; }
bool MOBJ::OnMessage(int /*message*/, void* /*data*/) { return false; }

}  // namespace ORVANE
