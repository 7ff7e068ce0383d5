#include "host/engine.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "host/internal/checks.h"
#include "host/internal/modules.h"
#include "host/internal/registry.h"
#include "host/internal/system.h"
#include "host/internal/texts.h"

namespace ORVANE {

namespace {

std::atomic<FAULTHANDLER> fault_handler = nullptr;

template <typename Part>
bool IsAnyIn(const std::vector<Part>& parts, const std::vector<Part>& all) {
  return std::find_first_of(all.begin(), all.end(), parts.begin(), parts.end()) != all.end();
}

std::string TextOf(const MSTR& text) { return std::string(TEXTS::View(text)); }

}  // namespace

void ReportFault(const char* call, const char* fault) {
  if (const FAULTHANDLER handler = fault_handler.load(); handler != nullptr) {
    handler(call, fault);
    return;
  }
  std::fprintf(stderr, "engine: %s: %s\n", call, fault);
  std::abort();
}

void SetFaultHandler(FAULTHANDLER handler) { fault_handler.store(handler); }

bool ChecksGuests() { return kChecksGuests; }

std::unique_ptr<PLUGIN> PLUGIN::Load(const char* path, std::string& error) {
  std::unique_ptr<PLUGIN> plugin(new PLUGIN);
  const MOBJ::SREC* const before = CLASSES::Head();
  plugin->library_ = SYSTEM::OpenLibrary(path, error);
  if (plugin->library_ == nullptr) return nullptr;
  plugin->classes_ = CLASSES::Since(before);
  plugin->initialise_ = SYSTEM::FindFunction(plugin->library_, "Initialise");
  plugin->release_ = SYSTEM::FindFunction(plugin->library_, "Release");
  if (plugin->initialise_ == nullptr || plugin->release_ == nullptr) {
    error = std::string(path) +
            ": not a plug-in: it does not have the functions Initialise and Release";
    return nullptr;
  }
  return plugin;
}

PLUGIN::~PLUGIN() {
  if (library_ == nullptr) return;
  SYSTEM::CloseLibrary(library_);
  CheckGuest(!IsAnyIn(classes_, CLASSES::Since(nullptr)), "unloading",
             "a class record is left behind");
}

void PLUGIN::Initialise() {
  const MSSMODULE* const before = MODULES::Head();
  initialise_();
  modules_ = MODULES::Since(before);
}

void PLUGIN::Release() {
  release_();
  CheckGuest(!IsAnyIn(modules_, MODULES::Since(nullptr)), "Release",
             "a script class is left behind");
}

bool HasClass(const char* class_name) { return CLASSES::Find(class_name) != nullptr; }

OBJECTPTR CreateObject(const char* class_name) {
  const MOBJ::SREC* const record = CLASSES::Find(class_name);
  return OBJECTPTR(record != nullptr ? CLASSES::Create(*record) : nullptr);
}

ENTITYPTR CreateEntity(const char* class_name) {
  OBJECTPTR object = CreateObject(class_name);
  auto* const entity = dynamic_cast<ENTITY*>(object.get());
  if (entity != nullptr) static_cast<void>(object.release());  // the same object
  return ENTITYPTR(entity);
}

std::unique_ptr<MODULEINFO> DescribeModule(std::string_view script_class) {
  const MSSMODULE* const module = MODULES::Find(script_class);
  if (module == nullptr) return nullptr;
  const MSSMODULE* const parent = MODULES::Parent(*module);
  auto info = std::make_unique<MODULEINFO>();
  info->name = TextOf(MODULES::State(*module).name);
  if (parent != nullptr) info->parent = TextOf(MODULES::State(*parent).name);
  info->flags = MODULES::Flags(*module);
  for (const MSSMODULE::METHOD& method : MODULES::State(*module).methods) {
    info->methods.push_back(
        {TextOf(method.name), method.minimum_locals, method.maximum_locals, method.stack});
  }
  return info;
}

INSTANCEPTR CreateInstance(std::string_view script_class) {
  MSSMODULE* const module = MODULES::Find(script_class);
  return INSTANCEPTR(module != nullptr ? module->CreateInstance() : nullptr);
}

bool Bind(MSSINSTANCE& instance, ENTITY* entity) {
  auto* const bindable = dynamic_cast<ENTITY::MSS*>(&instance);
  if (bindable == nullptr) return false;
  bindable->entity.SubRef();
  bindable->entity.Set(entity);
  bindable->entity.AddRef();
  return true;
}

}  // namespace ORVANE
