// The lists of what guests make known to the engine by name.
//
// Their heads and lock need no set-up at run time, so records of any library find them ready,
// whatever the order in which static objects are made, and still there when the last record goes.
#pragma once

#include <string_view>
#include <vector>

#include "host/mobj.h"

namespace ORVANE {

// Holds the lock of all registries, for a few instructions.
class REGISTRYLOCK {
 public:
  REGISTRYLOCK();
  REGISTRYLOCK(const REGISTRYLOCK&) = delete;
  REGISTRYLOCK& operator=(const REGISTRYLOCK&) = delete;
  ~REGISTRYLOCK();
};

struct CLASSES {
  static void Add(const MOBJ::SREC& record);
  static void Remove(const MOBJ::SREC& record);
  // Null when no class of that name is known.
  static const MOBJ::SREC* Find(std::string_view class_name);
  static MOBJ* Create(const MOBJ::SREC& record) { return record.factory_(); }
  // Those that have come after `head`, an earlier one or null for all.
  static std::vector<const MOBJ::SREC*> Since(const MOBJ::SREC* head);
  static const MOBJ::SREC* Head();
};

}  // namespace ORVANE
