#include "host/script.h"

#include <mutex>

#include "host/mlog.h"

namespace ORVANE {

namespace {
constinit std::mutex modules_mutex;
constinit MSSMODULE* modules_head = nullptr;
}  // namespace

MSSMODULE::~MSSMODULE() {
  const std::lock_guard lock(modules_mutex);
  for (MSSMODULE** link = &modules_head; *link != nullptr; link = &(*link)->next_named_) {
    if (*link == this) {
      *link = next_named_;
      break;
    }
  }
}

bool MSSMODULE::Read(MBUFFER& /*buffer*/) { return true; }
void MSSMODULE::Release() {}
MSSINSTANCE* MSSMODULE::CreateInstance() { return nullptr; }

void MSSMODULE::SetName(const char* name) {
  const std::lock_guard lock(modules_mutex);
  const bool known = !name_.IsEmpty();
  name_ = name;
  if (known) return;
  next_named_ = modules_head;
  modules_head = this;
}

MSSMODULE* MSSMODULE::Find(std::string_view name) {
  const std::lock_guard lock(modules_mutex);
  MSSMODULE* module = modules_head;
  while (module != nullptr && !(module->name_ == name)) module = module->next_named_;
  return module;
}

void MSSMODULE::AddMethod(const MSTR& name, int minimum_locals, int maximum_locals, int stack,
                          FUNCTION function) {
  methods_.push_back({name, minimum_locals, maximum_locals, stack, function});
}

const MSSMODULE::METHOD* MSSMODULE::FindMethod(std::string_view name) const {
  for (const METHOD& method : methods_) {
    if (method.name == name) return &method;
  }
  const auto* const parent = static_cast<const MSSMODULE*>(parent_.Get());
  return parent != nullptr ? parent->FindMethod(name) : nullptr;
}

const MSSMODULE::METHOD* MSSMODULE::FindMethod(int index) const {
  const auto position = static_cast<std::size_t>(index);
  return index >= 0 && position < methods_.size() ? &methods_[position] : nullptr;
}

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
  return Module() != nullptr ? Module()->FindMethod(index) : nullptr;
}
const MSSMODULE::METHOD* MSSINSTANCE::FindMethod(const char* name) const {
  return Module() != nullptr ? Module()->FindMethod(name) : nullptr;
}
int MSSINSTANCE::FindMember(int /*index*/) const { return -1; }
int MSSINSTANCE::FindMember(const char* /*name*/) const { return -1; }
MSSINSTANCE* MSSINSTANCE::FindMemberVar(int /*index*/) { return nullptr; }
MSSINSTANCE* MSSINSTANCE::FindMemberVar(const char* /*name*/) { return nullptr; }

MSSINTEGER* MSSINTEGER::Allocate() { return new MSSINTEGER; }
MSSSTRING* MSSSTRING::Allocate() { return new MSSSTRING; }

MSSEXEC::MSSEXEC(MSSINSTANCE* self, std::string_view place) : self_(self), place_(place) {}
MSSEXEC::~MSSEXEC() = default;

void MSSEXEC::AddArgument(std::int32_t value) {
  auto* const argument = MSSINTEGER::Allocate();
  arguments_.emplace_back(argument);
  argument->value = value;
}

void MSSEXEC::AddArgument(std::string_view value) {
  auto* const argument = MSSSTRING::Allocate();
  arguments_.emplace_back(argument);
  argument->value = value;
}

MSSINSTANCE* MSSEXEC::GetLocal(int index) const {
  if (index == 0) return self_;
  const auto position = static_cast<std::size_t>(index) - 1;
  return index > 0 && position < arguments_.size() ? arguments_[position].get() : nullptr;
}

bool MSSEXEC::GetLocalInt(int index, std::int32_t& value) const {
  const auto* const local = dynamic_cast<const MSSINTEGER*>(GetLocal(index));
  if (local == nullptr) return false;
  value = local->value;
  return true;
}

bool MSSEXEC::GetLocalString(int index, const MSTR*& text) const {
  const auto* const local = dynamic_cast<const MSSSTRING*>(GetLocal(index));
  if (local == nullptr) return false;
  text = &local->value;
  return true;
}

bool MSSEXEC::Push(MSSINSTANCE* result) {
  result_.reset(result);
  return true;
}

void MSSEXEC::LogCallers() const { MLog.Log(MLOG::CALLER, "%s", place_.Text()); }

}  // namespace ORVANE
