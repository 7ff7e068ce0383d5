// The engine's log.
//
// Threads: any thread may log; the entries of each thread stay in their order. [any]
// Errors: an entry that cannot be kept for lack of memory is lost.
#pragma once

#include "host/api.h"

namespace ORVANE {

class ORVANE_API MLOG {
 public:
  // What an entry is: a notice of the life cycle, or an error or warning.
  enum TYPE { NOTICE = 1, ERROR = 2 };

  void Log(TYPE type, const char* format, ...) ORVANE_PRINTF(3, 4);
  // An entry without a type.
  void Log(const char* format, ...) ORVANE_PRINTF(2, 3);
};

ORVANE_API extern MLOG MLog;

}  // namespace ORVANE
