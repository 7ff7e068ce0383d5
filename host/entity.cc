#include "host/entity.h"

#include <atomic>

namespace ORVANE {

// Outlives the object for as long as anything refers to it.
struct MMONOBJ::MONITOR {
  std::atomic<int> references = 1;
  std::atomic<MMONOBJ*> object = nullptr;

  void Drop() {
    const int before = references.fetch_sub(1, std::memory_order_acq_rel);
    if (before == 1) delete this;
  }
};

MMONOBJ::MMONOBJ() : monitor_(new MONITOR) { monitor_->object = this; }

MMONOBJ::~MMONOBJ() {
  monitor_->object = nullptr;
  monitor_->Drop();
}

MMONOBJPNT::MMONOBJPNT() : monitor_(nullptr) {}
MMONOBJPNT::MMONOBJPNT(const MMONOBJPNT& other) : MMONOBJPNT() { *this = other; }
MMONOBJPNT::~MMONOBJPNT() { SubRef(); }

MMONOBJPNT& MMONOBJPNT::operator=(const MMONOBJPNT& other) {
  if (this == &other) return *this;
  SubRef();
  monitor_ = other.monitor_;
  AddRef();
  return *this;
}

MMONOBJ* MMONOBJPNT::Get() const {
  return monitor_ != nullptr ? monitor_->object.load(std::memory_order_acquire) : nullptr;
}

void MMONOBJPNT::AddRef() {
  if (monitor_ != nullptr) monitor_->references.fetch_add(1, std::memory_order_relaxed);
}

void MMONOBJPNT::SubRef() {
  if (monitor_ != nullptr) monitor_->Drop();
}

void MMONOBJPNT::Set(MMONOBJ* object) { monitor_ = object != nullptr ? object->monitor_ : nullptr; }

MGDNODE::MGDNODE() = default;
MGDNODE::~MGDNODE() = default;
bool MGDNODE::Read(MBUFFER& buffer) { return MMONOBJ::Read(buffer); }
bool MGDNODE::Write(MBUFFER& buffer) const { return MMONOBJ::Write(buffer); }
void MGDNODE::MarkChanged() {}
void MGDNODE::MarkMoved() {}

ENTITY::CREATEPARAMS::CREATEPARAMS() = default;
ENTITY::CREATEPARAMS::~CREATEPARAMS() = default;

bool ENTITY::CREATEPARAMS::MakeParams(const MXML::NODE& node) {
  name = node.GetAttribute("name");
  return true;
}

namespace {
ENTITY::MSS::MODULE entity_module;
}
MREFOBJREF ENTITY::MSS::MODULE::_Module(&entity_module);

ENTITY::MSS::MODULE::MODULE() { SetName("ENTITY"); }
ENTITY::MSS::MODULE::~MODULE() = default;

MSSINSTANCE* ENTITY::MSS::MODULE::CreateInstance() {
  auto* const instance = new MSS;
  instance->SetModule(this);
  return instance;
}

ENTITY::MSS::MSS() = default;
ENTITY::MSS::~MSS() = default;

bool ENTITY::MSS::Copy(const MSSINSTANCE* other) {
  const auto* const bound = dynamic_cast<const MSS*>(other);
  if (bound == nullptr) return false;
  entity = bound->entity;
  return true;
}

int ENTITY::MSS::Compare(const MSSINSTANCE* other) const {
  const auto* const bound = dynamic_cast<const MSS*>(other);
  return bound != nullptr && bound->entity.Get() == entity.Get() ? 0 : 1;
}

bool ENTITY::MSS::IsNull() const { return entity.Get() == nullptr; }

ENTITY::ENTITY() = default;
ENTITY::~ENTITY() = default;
void ENTITY::Refresh() {}
bool ENTITY::Copy(const ENTITY* /*other*/) { return false; }
int ENTITY::FindAnim(const char* /*name*/) const { return -1; }
int ENTITY::GetNumAnims() const { return 0; }
float ENTITY::GetAnimDuration(int /*index*/) const { return 0; }
int ENTITY::GetAnim() const { return -1; }
bool ENTITY::SetAnim(int /*index*/) { return false; }
void ENTITY::CollectColliders(void* /*collection*/) {}
ENTITY::CREATEPARAMS* ENTITY::CreateParams() const { return nullptr; }
bool ENTITY::Create(const CREATEPARAMS& /*params*/) { return true; }
void ENTITY::PreThink(std::uint32_t /*tick*/) {}
void ENTITY::Think(std::uint32_t /*tick*/) {}
void ENTITY::PostThink(std::uint32_t /*tick*/) {}
void ENTITY::Render(void* /*view*/) {}
void ENTITY::PreRender(void* /*view*/) {}
bool ENTITY::CollideStart(void* /*collision*/) { return false; }
bool ENTITY::Collide(const VOLUME& /*volume*/) { return false; }
bool ENTITY::Collide(const HULL& /*hull*/) { return false; }
void ENTITY::CollideDebug(void* /*view*/) {}
void ENTITY::CollideEnd(void* /*collision*/) {}
void ENTITY::OnCollide(ENTITY* /*other*/) {}
bool ENTITY::OnInput(int /*input*/) { return false; }
bool ENTITY::OnInputPreview(int /*input*/) { return false; }
void ENTITY::OnViewSize(int /*width*/, int /*height*/) {}

}  // namespace ORVANE
