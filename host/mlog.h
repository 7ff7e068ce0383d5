// The engine's log.
//
// Threads: any thread may log; the sink is called by one thread at a time.
// Errors: an entry that cannot be formatted for lack of memory is lost.
#pragma once

#include <cstdarg>
#include <functional>
#include <mutex>
#include <string_view>

#include "host/api.h"

namespace ORVANE {

class ORVANE_API MLOG {
 public:
  // What an entry is: a notice of the life cycle, an error or warning, one place of a script call
  // stack, or none of these.
  enum TYPE { UNTYPED = 0, NOTICE = 1, ERROR = 2, CALLER = 3 };

  // Receives every entry's text, without a line end. Must not log. The text lives for the call.
  using SINK = std::function<void(TYPE type, std::string_view text)>;

  MLOG();
  ~MLOG();
  MLOG(const MLOG&) = delete;
  MLOG& operator=(const MLOG&) = delete;

  void Log(TYPE type, const char* format, ...) ORVANE_PRINTF(3, 4);
  void Log(const char* format, ...) ORVANE_PRINTF(2, 3);

  // Until a host sets a sink, entries are dropped. An empty sink drops them again.
  void SetSink(SINK sink);

 private:
  void Write(TYPE type, const char* format, std::va_list arguments) ORVANE_PRINTF(3, 0);

  std::mutex mutex_;  // guards sink_
  SINK sink_;
};

ORVANE_API extern MLOG MLog;

}  // namespace ORVANE
