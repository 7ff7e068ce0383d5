// Script classes as the engine sees them.
#pragma once

#include <string_view>
#include <vector>

#include "host/mstr.h"
#include "host/script.h"

namespace ORVANE {

struct MSSMODULE::METHOD {
  MSTR name;
  int minimum_locals;
  int maximum_locals;
  int stack;
  FUNCTION function;
};

struct MSSMODULE::STATE {
  MSTR name;  // empty until the module is named
  std::vector<METHOD> methods;
  MSSMODULE* next_named = nullptr;
};

struct MODULES {
  static void Add(MSSMODULE& module);
  static void Remove(MSSMODULE& module);
  // The most recently named class of that name, or null.
  static MSSMODULE* Find(std::string_view name);
  // Those that have been named since `head` was the latest, and the latest one.
  static std::vector<const MSSMODULE*> Since(const MSSMODULE* head);
  static const MSSMODULE* Head();

  // This class's method of that name, else the parent's, or null.
  static const MSSMODULE::METHOD* FindMethod(const MSSMODULE& module, std::string_view name);
  static const MSSMODULE::METHOD* FindMethod(const MSSMODULE& module, int index);
  static const MSSMODULE* Parent(const MSSMODULE& module);
  static const MSSMODULE::STATE& State(const MSSMODULE& module) { return *module.state_; }
  static std::uint32_t Flags(const MSSMODULE& module) { return module.flags_; }
};

}  // namespace ORVANE
