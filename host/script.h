// Script classes, their instances, and calls of their methods.
//
// Ownership: an instance goes back to whoever made it through its virtual Release. A script class
//   is owned by the plug-in or engine part that made it.
// Threads: a call belongs to one thread; classes are changed only while they are built.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "host/api.h"
#include "host/mrefobj.h"
#include "host/mstr.h"

namespace ORVANE {

class MSSEXEC;
class MSSINSTANCE;

// A script class: a name, a parent class and methods.
class ORVANE_API MSSMODULE : public MREFOBJ {
 public:
  using FUNCTION = bool (*)(MSSEXEC*);
  struct METHOD {
    MSTR name;
    int minimum_locals;
    int maximum_locals;
    int stack;
    FUNCTION function;
  };

  MSSMODULE() = default;
  ~MSSMODULE() override;

  bool Read(MBUFFER& buffer) override;
  // A module belongs to its maker, so giving it back destroys nothing.
  void Release() override;
  // A new instance of this class, or null.
  virtual MSSINSTANCE* CreateInstance();

  // Also makes the class known to the engine under that name, until it is destroyed.
  void SetName(const char* name);
  const MSTR& Name() const { return name_; }

  void AddMethod(const MSTR& name, int minimum_locals, int maximum_locals, int stack,
                 FUNCTION function);
  // This class's method of that name, else the parent's, or null.
  const METHOD* FindMethod(std::string_view name) const;
  const METHOD* FindMethod(int index) const;

  // The most recently named class of that name, or null.
  static MSSMODULE* Find(std::string_view name);

 protected:
  MREFOBJREF parent_;
  std::uint32_t flags_ = 0;

 private:
  MSTR name_;
  std::vector<METHOD> methods_;
  MSSMODULE* next_named_ = nullptr;
};

// A script value. Operators that a class lacks answer false.
class ORVANE_API MSSINSTANCE : public MREFOBJ {
 public:
  virtual MSSINSTANCE* MakeCopy();
  virtual MSSINSTANCE* Clone();
  virtual bool Copy(const MSSINSTANCE* other);
  virtual void ExecDestructor();
  virtual int Compare(const MSSINSTANCE* other) const;
  virtual bool Add(const MSSINSTANCE* other);
  virtual bool Sub(const MSSINSTANCE* other);
  virtual bool Mul(const MSSINSTANCE* other);
  virtual bool Div(const MSSINSTANCE* other);
  virtual bool IsNull() const;
  virtual const MSSMODULE::METHOD* FindMethod(int index) const;
  virtual const MSSMODULE::METHOD* FindMethod(const char* name) const;
  virtual int FindMember(int index) const;
  virtual int FindMember(const char* name) const;
  virtual MSSINSTANCE* FindMemberVar(int index);
  virtual MSSINSTANCE* FindMemberVar(const char* name);

  MSSMODULE* Module() const { return static_cast<MSSMODULE*>(module_.Get()); }
  void SetModule(MREFOBJ* module) { module_ = module; }

 private:
  MREFOBJREF module_;  // always an MSSMODULE
};

class ORVANE_API MSSINTEGER final : public MSSINSTANCE {
 public:
  // A new value of 0.
  static MSSINTEGER* Allocate();
  std::int32_t value = 0;
};

class ORVANE_API MSSSTRING final : public MSSINSTANCE {
 public:
  // A new empty value.
  static MSSSTRING* Allocate();
  MSTR value;
};

// Gives an instance back instead of deleting it.
struct RELEASE {
  void operator()(MOBJ* object) const { object->Release(); }
};
using INSTANCEPTR = std::unique_ptr<MSSINSTANCE, RELEASE>;

// One script call: the instance called, its arguments, and the result.
class ORVANE_API MSSEXEC {
 public:
  // `self` stays the caller's, and may be null. `place` names the calling script line for the call
  // stack, and must outlive the call.
  MSSEXEC(MSSINSTANCE* self, std::string_view place);
  MSSEXEC(const MSSEXEC&) = delete;
  MSSEXEC& operator=(const MSSEXEC&) = delete;
  ~MSSEXEC();

  void AddArgument(std::int32_t value);
  void AddArgument(std::string_view value);

  // Local 0 is the instance called, local i its i-th argument; null when there is none. What is
  // returned stays the call's.
  MSSINSTANCE* GetLocal(int index);
  // False, and nothing stored, when the local is missing or of another type. The text stays valid
  // for the call.
  [[nodiscard]] bool GetLocalInt(int index, std::int32_t& value);
  [[nodiscard]] bool GetLocalString(int index, const MSTR*& text);

  // Hands the call's result over; a later one replaces it.
  bool Push(MSSINSTANCE* result);
  // Writes the script call stack to the log.
  void LogCallers() const;

  // What was pushed, or null. Stays the call's.
  const MSSINSTANCE* Result() const { return result_.get(); }

 private:
  // Nearly every method has as few arguments as stand in here: a call then costs one allocation,
  // for its result.
  using VALUE = std::variant<std::monostate, MSSINTEGER, MSSSTRING>;
  static constexpr std::size_t kInline = 4;

  VALUE& AddValue();

  MSSINSTANCE* const self_;
  const std::string_view place_;
  std::size_t count_ = 0;
  std::array<VALUE, kInline> arguments_;
  std::vector<std::unique_ptr<VALUE>> more_arguments_;
  INSTANCEPTR result_;
};

}  // namespace ORVANE
