#include "host/engine.h"

#include <dlfcn.h>

namespace ORVANE {

namespace {

using ENTRY = void (*)();

ENTRY FindEntry(void* library, const char* name) {
  return reinterpret_cast<ENTRY>(::dlsym(library, name));
}

}  // namespace

std::unique_ptr<PLUGIN> PLUGIN::Load(const char* path, std::string& error) {
  std::unique_ptr<PLUGIN> plugin(new PLUGIN);
  plugin->library_ = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (plugin->library_ == nullptr) {
    error = ::dlerror();
    return nullptr;
  }
  plugin->initialise_ = FindEntry(plugin->library_, "Initialise");
  plugin->release_ = FindEntry(plugin->library_, "Release");
  if (plugin->initialise_ == nullptr || plugin->release_ == nullptr) {
    error = std::string(path) + ": not a plug-in: it lacks the functions Initialise and Release";
    return nullptr;
  }
  return plugin;
}

PLUGIN::~PLUGIN() {
  if (library_ != nullptr) ::dlclose(library_);
}

void PLUGIN::Initialise() { initialise_(); }
void PLUGIN::Release() { release_(); }

ENTITYPTR CreateEntity(const char* class_name) {
  const MOBJ::SREC* const record = MOBJ::SREC::Find(class_name);
  if (record == nullptr) return nullptr;
  std::unique_ptr<MOBJ, RELEASE> object(record->Create());
  auto* const entity = dynamic_cast<ENTITY*>(object.get());
  if (entity == nullptr) return nullptr;
  static_cast<void>(object.release());  // the same object, by its other type
  return ENTITYPTR(entity);
}

INSTANCEPTR CreateInstance(std::string_view script_class) {
  MSSMODULE* const module = MSSMODULE::Find(script_class);
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

bool CallMethod(MSSEXEC& call, const char* method) {
  const MSSINSTANCE* const self = call.GetLocal(0);
  const MSSMODULE::METHOD* const found = self != nullptr ? self->FindMethod(method) : nullptr;
  return found != nullptr && found->function(&call);
}

}  // namespace ORVANE
