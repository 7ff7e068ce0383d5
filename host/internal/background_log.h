// What a thread of the engine logs while it works in the background.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "host/engine.h"

namespace ORVANE {

// For as long as this lives on a thread. A sink takes a microsecond and more for an entry, and some
// listings log one for every programme: so from a number on, entries wait for a thread of their own
// to pass them on; those of other threads may then pass them by. When this ends, all of them have
// reached the sink.
class BACKGROUNDLOG {
 public:
  BACKGROUNDLOG();
  BACKGROUNDLOG(const BACKGROUNDLOG&) = delete;
  BACKGROUNDLOG& operator=(const BACKGROUNDLOG&) = delete;
  ~BACKGROUNDLOG();

  // False when the entry is to be passed on at once.
  bool Defer(ENTRY entry, std::string_view text);

 private:
  void PassOn();

  int entries_ = 0;  // of this thread, up to where they begin to wait
  std::thread writer_;

  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  std::string waiting_;  // each entry's type and length in bytes, and its text
  bool ended_ = false;
};

// Writes the place of a call to the log, as one entry of a call stack.
void LogCaller(std::string_view place);

}  // namespace ORVANE
