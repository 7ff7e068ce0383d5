// What a host program needs of the engine: plug-ins, entities and script calls.
//
// Threads: the engine's thread, unless a line says otherwise.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/api.h"
#include "host/entity.h"
#include "host/script.h"

namespace ORVANE {

// A loaded plug-in library.
//
// Order of a life: Load, Initialise, its classes in use, Release, destruction (which unloads).
// Every entity and instance of its classes must be given back before Release.
class ORVANE_API PLUGIN {
 public:
  // Null when the library cannot be loaded or is no plug-in; `error` then says why.
  static std::unique_ptr<PLUGIN> Load(const char* path, std::string& error);
  PLUGIN(const PLUGIN&) = delete;
  PLUGIN& operator=(const PLUGIN&) = delete;
  ~PLUGIN();

  void Initialise();
  void Release();

 private:
  PLUGIN() = default;

  void* library_ = nullptr;  // Owned.
  void (*initialise_)() = nullptr;
  void (*release_)() = nullptr;
};

using ENTITYPTR = std::unique_ptr<ENTITY, RELEASE>;

// A new entity of the class of that name; null when there is none, or it is no entity class.
ORVANE_API ENTITYPTR CreateEntity(const char* class_name);

// A new instance of the script class of that name, not bound to anything; null when there is none
// or it has none to give. [any]
ORVANE_API INSTANCEPTR CreateInstance(std::string_view script_class);

// Binds an instance to an entity, or to nothing; false when it is no entity instance.
ORVANE_API bool Bind(MSSINSTANCE& instance, ENTITY* entity);

// Calls a method of the call's instance; false when it has no such method or the method failed.
// The result, if any, is then in the call. [any]
ORVANE_API bool CallMethod(MSSEXEC& call, const char* method);

}  // namespace ORVANE
