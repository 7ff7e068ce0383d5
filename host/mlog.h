// The engine's log.
//
// Threads: any thread may log; the sink is called by one thread at a time, and gets the entries of
//   each thread in their order.
// Errors: an entry that cannot be kept for lack of memory is lost.
#pragma once

#include <condition_variable>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

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

  class BACKGROUND;

 private:
  void Write(TYPE type, const char* format, std::va_list arguments) ORVANE_PRINTF(3, 0);
  void Pass(TYPE type, std::string_view text);

  std::mutex mutex_;  // guards sink_
  SINK sink_;
};

ORVANE_API extern MLOG MLog;

// What a thread that works in the background logs, for as long as this lives on it. A sink takes a
// microsecond and more for an entry, and some listings log one for every programme: so from a
// number on, entries wait for a thread of their own to pass them on; those of other threads may
// then pass them by. When this ends, all of them have reached the sink.
class ORVANE_API MLOG::BACKGROUND {
 public:
  BACKGROUND();
  BACKGROUND(const BACKGROUND&) = delete;
  BACKGROUND& operator=(const BACKGROUND&) = delete;
  ~BACKGROUND();

 private:
  friend class MLOG;

  // False when the entry is to be passed on at once.
  bool Take(TYPE type, std::string_view text);
  void PassOn();

  int entries_ = 0;  // of this thread, up to where they begin to wait
  std::thread writer_;

  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  std::string waiting_;  // each entry's type and length in bytes, and its text
  bool ended_ = false;
};

}  // namespace ORVANE
