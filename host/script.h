// Script classes, their instances and values, and calls of their methods.
//
// Ownership: an instance goes back to its maker through its virtual Release. A script class
//   is owned by the guest or engine part that made it.
// Threads: a call belongs to one thread; classes are changed only while they are built.
#pragma once

#include <cstdint>

#include "host/api.h"
#include "host/mrefobj.h"
#include "host/mstr.h"

namespace ORVANE {

class MSSEXEC;
class MSSINSTANCE;

// A script class: a name, a parent class and methods.
class ORVANE_API MSSMODULE : public MREFOBJ {
 public:
  // A method's function: true on success; it then has pushed its result, if it has one.
  using FUNCTION = bool (*)(MSSEXEC*);
  struct METHOD;

  MSSMODULE();
  ~MSSMODULE() override;

  bool Read(MBUFFER& buffer) override;
  // A module belongs to its maker, so giving it back destroys nothing.
  void Release() override;
  // A new instance of this class, or null. [any]
  virtual MSSINSTANCE* CreateInstance();

  // Also makes the class known to the engine under that name, until it is destroyed.
  void SetName(const char* name);
  // The numbers are the least and the most locals of a call, and the script's stack for it.
  void AddMethod(const MSTR& name, int minimum_locals, int maximum_locals, int stack,
                 FUNCTION function);

 protected:
  MREFOBJREF parent_;
  std::uint32_t flags_;

 private:
  friend struct MODULES;
  struct STATE;

  STATE* const state_;  // Owned.
};

// A script value. Operators that a class does not define answer false.
class ORVANE_API MSSINSTANCE : public MREFOBJ {
 public:
  MSSINSTANCE();
  ~MSSINSTANCE() override;

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

  // The script class that the instance belongs to; null for none.
  void SetModule(MREFOBJ* module);
  MREFOBJ* Module() const;

 private:
  MREFOBJREF module_;  // always an MSSMODULE
};

class ORVANE_API MSSINTEGER final : public MSSINSTANCE {
 public:
  // A new value of 0.
  static MSSINTEGER* Allocate();

  MSSINTEGER();
  ~MSSINTEGER() override;

  std::int32_t value;
};

class ORVANE_API MSSSTRING final : public MSSINSTANCE {
 public:
  // A new empty value.
  static MSSSTRING* Allocate();

  MSSSTRING();
  ~MSSSTRING() override;

  MSTR value;
};

// One script call: the instance called, its arguments, and the result. The engine makes it, and it
// must be used only until its method returns, by the thread that the method runs on.
class ORVANE_API MSSEXEC {
 public:
  MSSEXEC(const MSSEXEC&) = delete;
  MSSEXEC& operator=(const MSSEXEC&) = delete;

  // Local 0 is the instance called, local i its i-th argument; null when there is none. What is
  // returned stays the call's.
  MSSINSTANCE* GetLocal(int index);
  // False, and nothing stored, when the local is missing or of another type. The text stays valid
  // for the call.
  [[nodiscard]] bool GetLocalInt(int index, std::int32_t& value);
  [[nodiscard]] bool GetLocalString(int index, const MSTR*& text);

  // Hands the call's result over, once; the call owns it from then on.
  bool Push(MSSINSTANCE* result);
  // Writes the script call stack to the log.
  void LogCallers() const;

 protected:
  MSSEXEC();
  ~MSSEXEC() = default;
};

}  // namespace ORVANE
