#include "host/script.h"

#include <mutex>
#include <typeinfo>

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

namespace {

// The value as one of a final class; null when it is of another. Quicker than a general cast.
template <typename VALUE>
const VALUE* As(const MSSINSTANCE* value) {
  return value != nullptr && typeid(*value) == typeid(VALUE) ? static_cast<const VALUE*>(value)
                                                             : nullptr;
}

}  // namespace

MSSEXEC::MSSEXEC(MSSINSTANCE* self, std::string_view place) : self_(self), place_(place) {}
MSSEXEC::~MSSEXEC() = default;

MSSEXEC::VALUE& MSSEXEC::AddValue() {
  VALUE& value = count_ < kInline ? arguments_[count_]
                                  : *more_arguments_.emplace_back(std::make_unique<VALUE>());
  ++count_;
  return value;
}

void MSSEXEC::AddArgument(std::int32_t value) { AddValue().emplace<MSSINTEGER>().value = value; }

void MSSEXEC::AddArgument(std::string_view value) { AddValue().emplace<MSSSTRING>().value = value; }

MSSINSTANCE* MSSEXEC::GetLocal(int index) {
  if (index == 0) return self_;
  const auto position = static_cast<std::size_t>(index) - 1;
  if (index < 0 || position >= count_) return nullptr;
  VALUE& value = position < kInline ? arguments_[position] : *more_arguments_[position - kInline];
  if (auto* const integer = std::get_if<MSSINTEGER>(&value)) return integer;
  return std::get_if<MSSSTRING>(&value);
}

bool MSSEXEC::GetLocalInt(int index, std::int32_t& value) {
  const auto* const local = As<MSSINTEGER>(GetLocal(index));
  if (local == nullptr) return false;
  value = local->value;
  return true;
}

bool MSSEXEC::GetLocalString(int index, const MSTR*& text) {
  const auto* const local = As<MSSSTRING>(GetLocal(index));
  if (local == nullptr) return false;
  text = &local->value;
  return true;
}

bool MSSEXEC::Push(MSSINSTANCE* result) {
  result_.reset(result);
  return true;
}

void MSSEXEC::LogCallers() const {
  MLog.Log(MLOG::CALLER, "%.*s", static_cast<int>(place_.size()), place_.data());
}

}  // namespace ORVANE
