#include "host/script.h"

#include <typeinfo>

#include "host/engine.h"
#include "host/internal/background_log.h"
#include "host/internal/checks.h"
#include "host/internal/modules.h"
#include "host/internal/registry.h"
#include "host/internal/texts.h"

namespace ORVANE {

namespace {
constinit MSSMODULE* modules_head = nullptr;
}

void MODULES::Add(MSSMODULE& module) {
  const REGISTRYLOCK lock;
  module.state_->next_named = modules_head;
  modules_head = &module;
}

void MODULES::Remove(MSSMODULE& module) {
  const REGISTRYLOCK lock;
  for (MSSMODULE** link = &modules_head; *link != nullptr; link = &(*link)->state_->next_named) {
    if (*link == &module) {
      *link = module.state_->next_named;
      break;
    }
  }
}

MSSMODULE* MODULES::Find(std::string_view name) {
  const REGISTRYLOCK lock;
  MSSMODULE* module = modules_head;
  while (module != nullptr && TEXTS::View(module->state_->name) != name) {
    module = module->state_->next_named;
  }
  return module;
}

std::vector<const MSSMODULE*> MODULES::Since(const MSSMODULE* head) {
  const REGISTRYLOCK lock;
  std::vector<const MSSMODULE*> modules;
  for (const MSSMODULE* module = modules_head; module != nullptr && module != head;
       module = module->state_->next_named) {
    modules.push_back(module);
  }
  return modules;
}

const MSSMODULE* MODULES::Head() {
  const REGISTRYLOCK lock;
  return modules_head;
}

const MSSMODULE* MODULES::Parent(const MSSMODULE& module) {
  return static_cast<const MSSMODULE*>(module.parent_.Get());
}

const MSSMODULE::METHOD* MODULES::FindMethod(const MSSMODULE& module, std::string_view name) {
  for (const MSSMODULE::METHOD& method : module.state_->methods) {
    if (TEXTS::View(method.name) == name) return &method;
  }
  const MSSMODULE* const parent = Parent(module);
  return parent != nullptr ? FindMethod(*parent, name) : nullptr;
}

const MSSMODULE::METHOD* MODULES::FindMethod(const MSSMODULE& module, int index) {
  const auto position = static_cast<std::size_t>(index);
  const auto& methods = module.state_->methods;
  return index >= 0 && position < methods.size() ? &methods[position] : nullptr;
}

MSSMODULE::MSSMODULE() : flags_(0), state_(new STATE) {}

MSSMODULE::~MSSMODULE() {
  MODULES::Remove(*this);
  delete state_;
}

bool MSSMODULE::Read(MBUFFER& /*buffer*/) { return true; }
void MSSMODULE::Release() {}
MSSINSTANCE* MSSMODULE::CreateInstance() { return nullptr; }

void MSSMODULE::SetName(const char* name) {
  const bool known = state_->name.length != 0;
  state_->name = name;
  if (!known) MODULES::Add(*this);
}

void MSSMODULE::AddMethod(const MSTR& name, int minimum_locals, int maximum_locals, int stack,
                          FUNCTION function) {
  state_->methods.push_back({name, minimum_locals, maximum_locals, stack, function});
}

MSSINSTANCE::MSSINSTANCE() = default;
MSSINSTANCE::~MSSINSTANCE() = default;
MSSINSTANCE* MSSINSTANCE::MakeCopy() { return nullptr; }
MSSINSTANCE* MSSINSTANCE::Clone() { return nullptr; }
bool MSSINSTANCE::Copy(const MSSINSTANCE* /*other*/) { return false; }
void MSSINSTANCE::ExecDestructor() {}
int MSSINSTANCE::Compare(const MSSINSTANCE* other) const { return other == this ? 0 : 1; }
bool MSSINSTANCE::Add(const MSSINSTANCE* /*other*/) { return false; }
bool MSSINSTANCE::Sub(const MSSINSTANCE* /*other*/) { return false; }
bool MSSINSTANCE::Mul(const MSSINSTANCE* /*other*/) { return false; }
bool MSSINSTANCE::Div(const MSSINSTANCE* /*other*/) { return false; }
bool MSSINSTANCE::IsNull() const { return false; }
const MSSMODULE::METHOD* MSSINSTANCE::FindMethod(int index) const {
  return Module() != nullptr ? MODULES::FindMethod(static_cast<const MSSMODULE&>(*Module()), index)
                             : nullptr;
}
const MSSMODULE::METHOD* MSSINSTANCE::FindMethod(const char* name) const {
  return Module() != nullptr ? MODULES::FindMethod(static_cast<const MSSMODULE&>(*Module()), name)
                             : nullptr;
}
int MSSINSTANCE::FindMember(int /*index*/) const { return -1; }
int MSSINSTANCE::FindMember(const char* /*name*/) const { return -1; }
MSSINSTANCE* MSSINSTANCE::FindMemberVar(int /*index*/) { return nullptr; }
MSSINSTANCE* MSSINSTANCE::FindMemberVar(const char* /*name*/) { return nullptr; }

MREFOBJ* MSSINSTANCE::Module() const { return module_.Get(); }
void MSSINSTANCE::SetModule(MREFOBJ* module) { module_ = module; }

MSSINTEGER::MSSINTEGER() : value(0) {}
MSSINTEGER::~MSSINTEGER() = default;
MSSSTRING::MSSSTRING() = default;
MSSSTRING::~MSSSTRING() = default;
MSSINTEGER* MSSINTEGER::Allocate() { return new MSSINTEGER; }
MSSSTRING* MSSSTRING::Allocate() { return new MSSSTRING; }

namespace {

// The value as one of a final class; null when it is of another. Quicker than a general cast.
template <typename VALUE>
const VALUE* As(const MSSINSTANCE* value) {
  return value != nullptr && typeid(*value) == typeid(VALUE) ? static_cast<const VALUE*>(value)
                                                             : nullptr;
}

}  // namespace

MSSEXEC::MSSEXEC() = default;

MSSINSTANCE* MSSEXEC::GetLocal(int index) {
  auto& call = static_cast<CALL&>(*this);
  call.CheckGuest("MSSEXEC::GetLocal");
  return call.Local(index);
}

bool MSSEXEC::GetLocalInt(int index, std::int32_t& value) {
  auto& call = static_cast<CALL&>(*this);
  call.CheckGuest("MSSEXEC::GetLocalInt");
  const auto* const local = As<MSSINTEGER>(call.Local(index));
  if (local == nullptr) return false;
  value = local->value;
  return true;
}

bool MSSEXEC::GetLocalString(int index, const MSTR*& text) {
  auto& call = static_cast<CALL&>(*this);
  call.CheckGuest("MSSEXEC::GetLocalString");
  const auto* const local = As<MSSSTRING>(call.Local(index));
  if (local == nullptr) return false;
  text = &local->value;
  return true;
}

bool MSSEXEC::Push(MSSINSTANCE* result) {
  auto& call = static_cast<CALL&>(*this);
  call.CheckGuest("MSSEXEC::Push");
  CheckGuest(call.result_ == nullptr, "MSSEXEC::Push", "a result is pushed twice");
  call.result_.reset(result);
  return true;
}

void MSSEXEC::LogCallers() const {
  const auto& call = static_cast<const CALL&>(*this);
  call.CheckGuest("MSSEXEC::LogCallers");
  LogCaller(call.place_);
}

CALL::CALL(MSSINSTANCE* self, std::string_view place) : self_(self), place_(place) {}
CALL::~CALL() = default;

CALL::VALUE& CALL::AddValue() {
  VALUE& value = count_ < kInline ? arguments_[count_]
                                  : *more_arguments_.emplace_back(std::make_unique<VALUE>());
  ++count_;
  return value;
}

void CALL::AddArgument(std::int32_t value) { AddValue().emplace<MSSINTEGER>().value = value; }

void CALL::AddArgument(std::string_view value) {
  TEXTS::Assign(AddValue().emplace<MSSSTRING>().value, value);
}

MSSINSTANCE* CALL::Local(int index) {
  if (index == 0) return self_;
  const auto position = static_cast<std::size_t>(index) - 1;
  if (index < 0 || position >= count_) return nullptr;
  VALUE& value = position < kInline ? arguments_[position] : *more_arguments_[position - kInline];
  if (auto* const integer = std::get_if<MSSINTEGER>(&value)) return integer;
  return std::get_if<MSSSTRING>(&value);
}

void CALL::CheckGuest(const char* operation) const {
  ORVANE::CheckGuest(running_, operation, "the call is used after its method has returned");
  ORVANE::CheckGuest(!kChecksGuests || thread_ == std::this_thread::get_id(), operation,
                     "the call is used by another thread than its method's");
}

bool CALL::HasMethod(const char* method) const {
  return self_ != nullptr && self_->FindMethod(method) != nullptr;
}

bool CALL::Run(const char* method) {
  return Run(self_ != nullptr ? self_->FindMethod(method) : nullptr);
}

bool CALL::Run(std::string_view script_class, const char* method) {
  const MSSMODULE* const module = MODULES::Find(script_class);
  return Run(module != nullptr ? MODULES::FindMethod(*module, method) : nullptr);
}

bool CALL::Run(const MSSMODULE::METHOD* method) {
  if (method == nullptr) return false;
  if (kChecksGuests) thread_ = std::this_thread::get_id();
  running_ = true;
  const bool done = method->function(this);
  running_ = false;
  return done;
}

}  // namespace ORVANE
