// A schedule as a program asks it: through the script methods, and nothing else.
//
// Units: times are the plug-in's, minutes since 1601-01-01 00:00 UTC.
// Threads: the one that the session belongs to.
// Errors: a call that fails throws std::runtime_error with the method's name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/session.h"
#include "host/engine.h"

namespace shell {

class Guide {
 public:
  explicit Guide(Session& session) : session_(session) {}

  // Loads "`stem`.xml" and waits for it. False when that gives no schedule.
  bool Load(const std::string& stem) {
    Call("InitSchedule", std::string_view(), std::string_view(), std::string_view(stem));
    return StationCount() > 0;
  }

  std::int32_t StationCount() { return Integer("GetStationCount"); }
  std::string StationId(std::int32_t station) { return Text("GetStationId", station); }
  std::string StationName(std::int32_t station) { return Text("GetStationName", station); }

  std::int32_t Now(std::int32_t granularity) { return Integer("GetNowTime", granularity); }
  std::int32_t Start() { return Integer("GetStartTime"); }
  std::int32_t End() { return Integer("GetEndTime"); }
  std::string TimeText(std::int32_t time, std::int32_t format) {
    return Text("ConvertLocalTime2String", time, format);
  }

  std::int32_t ProgramCount(std::int32_t station) { return Integer("GetProgramCount", station); }
  std::int32_t ProgramStart(std::int32_t station, std::int32_t program) {
    return Integer("GetProgramStartTime", station, program);
  }
  std::int32_t ProgramEnd(std::int32_t station, std::int32_t program) {
    return Integer("GetProgramEndTime", station, program);
  }
  std::string ProgramName(std::int32_t station, std::int32_t program) {
    return Text("GetProgramName", station, program);
  }
  std::string ProgramData(std::int32_t station, std::int32_t program, std::string_view text) {
    return Text("GetProgramData", station, program, text);
  }

 private:
  template <typename... Arguments>
  ORVANE::CALL& Call(ORVANE::CALL& call, const char* method, Arguments... arguments) {
    (call.AddArgument(arguments), ...);
    Run(call, method);
    return call;
  }
  template <typename... Arguments>
  void Call(const char* method, Arguments... arguments) {
    ORVANE::CALL call(&session_.Instance(), method);
    Call(call, method, arguments...);
  }
  template <typename... Arguments>
  std::int32_t Integer(const char* method, Arguments... arguments) {
    ORVANE::CALL call(&session_.Instance(), method);
    return IntegerOf(Call(call, method, arguments...));
  }
  template <typename... Arguments>
  std::string Text(const char* method, Arguments... arguments) {
    ORVANE::CALL call(&session_.Instance(), method);
    return TextOf(Call(call, method, arguments...));
  }

  static void Run(ORVANE::CALL& call, const char* method);
  static std::int32_t IntegerOf(const ORVANE::CALL& call);
  static std::string TextOf(const ORVANE::CALL& call);

  Session& session_;
};

}  // namespace shell
