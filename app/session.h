// The plug-in's life in a host program: one browser with one script instance bound to it.
//
// Order of a life: Open, then calls and ticks, then destruction, which gives the instance and the
// browser back (waiting for a load that runs), has the plug-in release, and unloads it.
#pragma once

#include <memory>
#include <string>

#include "host/engine.h"

namespace shell {

class Session {
 public:
  // Null when the plug-in cannot be used; `error` then says why.
  static std::unique_ptr<Session> Open(const std::string& plugin_path, std::string& error);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  ORVANE::MSSINSTANCE& Instance() { return *instance_; }
  void Think() { browser_->Think(0); }

 private:
  Session() = default;

  std::unique_ptr<ORVANE::PLUGIN> plugin_;
  ORVANE::ENTITYPTR browser_;
  ORVANE::INSTANCEPTR instance_;
};

// Has the engine's log written to standard error, an entry at a time: "notice: ", "error: " or
// "log: " and the text, a script call as "  at " and its place.
void LogToStandardError();

}  // namespace shell
