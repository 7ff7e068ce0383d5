// What a host program needs of the engine: plug-ins, entities, script calls and the log.
//
// Threads: the engine's thread, unless a line says otherwise.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

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
  // Null when the library cannot be loaded or is not a plug-in; `error` then says why.
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
  // What the library has made known, to tell what it leaves behind.
  std::vector<const MOBJ::SREC*> classes_;
  std::vector<const MSSMODULE*> modules_;
};

// Gives an object back instead of deleting it.
struct RELEASE {
  void operator()(MOBJ* object) const { object->Release(); }
};
using OBJECTPTR = std::unique_ptr<MOBJ, RELEASE>;
using ENTITYPTR = std::unique_ptr<ENTITY, RELEASE>;
using INSTANCEPTR = std::unique_ptr<MSSINSTANCE, RELEASE>;

// Whether a class of that name is known. [any]
ORVANE_API bool HasClass(const char* class_name);

// A new object of the class of that name; null when there is none, or its factory has nothing to
// give. [any]
ORVANE_API OBJECTPTR CreateObject(const char* class_name);

// The same; null also when it is not an entity class.
ORVANE_API ENTITYPTR CreateEntity(const char* class_name);

// A script class as its maker has described it.
struct METHODINFO {
  std::string name;
  int minimum_locals;
  int maximum_locals;
  int stack;
};
struct MODULEINFO {
  std::string name;
  std::string parent;  // the parent class's name
  std::uint32_t flags;
  std::vector<METHODINFO> methods;  // its own, in order
};

// Null when there is no script class of that name. [any]
ORVANE_API std::unique_ptr<MODULEINFO> DescribeModule(std::string_view script_class);

// A new instance of the script class of that name, not bound to anything; null when there is none
// or it has none to give. [any]
ORVANE_API INSTANCEPTR CreateInstance(std::string_view script_class);

// Binds an instance to an entity, or to nothing; false when it is not an entity instance.
ORVANE_API bool Bind(MSSINSTANCE& instance, ENTITY* entity);

// One call of a script method. It may be on any thread, and stays on it.
class ORVANE_API CALL final : public MSSEXEC {
 public:
  // `self` stays the caller's, and may be null. `place` names the calling script line for the call
  // stack, and must outlive the call.
  CALL(MSSINSTANCE* self, std::string_view place);
  ~CALL();

  void AddArgument(std::int32_t value);
  void AddArgument(std::string_view value);

  // Whether the class of the call's instance has such a method.
  bool HasMethod(const char* method) const;

  // Calls the method; false when there is no such method or it failed.
  bool Run(const char* method);
  // Calls a script class's method on the call's instance, whatever that is.
  bool Run(std::string_view script_class, const char* method);

  // What was pushed, or null: an MSSINTEGER or MSSSTRING. Stays the call's.
  const MSSINSTANCE* Result() const { return result_.get(); }

 private:
  friend class MSSEXEC;

  // Nearly every method has as few arguments as stand in here: a call then costs one allocation,
  // for its result.
  using VALUE = std::variant<std::monostate, MSSINTEGER, MSSSTRING>;
  static constexpr std::size_t kInline = 4;

  bool Run(const MSSMODULE::METHOD* method);
  VALUE& AddValue();
  MSSINSTANCE* Local(int index);
  void CheckGuest(const char* operation) const;

  MSSINSTANCE* const self_;
  const std::string_view place_;
  std::size_t count_ = 0;
  std::array<VALUE, kInline> arguments_;
  std::vector<std::unique_ptr<VALUE>> more_arguments_;
  INSTANCEPTR result_;
  bool running_ = false;
  std::thread::id thread_;  // that the method runs on
};

// What a log entry is; the first three as MLOG has them.
enum class ENTRY { Untyped = 0, Notice = 1, Error = 2, Caller = 3 };

// Receives every log entry's text, without a line end, one at a time; on any thread. Must not log.
// The text lives for the call.
using SINK = std::function<void(ENTRY entry, std::string_view text)>;

// Until a host sets a sink, entries are dropped. An empty sink drops them again. [any]
ORVANE_API void SetLogSink(SINK sink);

// In debug builds the engine checks what its guests do. A guest that breaks the contract is told
// by the call that it made and the fault; without a handler the text goes to standard error and the
// process is aborted. Null sets that again.
using FAULTHANDLER = void (*)(const char* call, const char* fault);
ORVANE_API void SetFaultHandler(FAULTHANDLER handler);

// Whether this build of the engine checks its guests.
ORVANE_API bool ChecksGuests();

}  // namespace ORVANE
