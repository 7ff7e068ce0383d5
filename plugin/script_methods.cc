#include "plugin/script_methods.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <thread>
#include <utility>

#include "plugin/script_call.h"
#include "schedule/station.h"
#include "schedule/template.h"
#include "schedule/time_value.h"
#include "text/bad_alloc.h"
#include "text/counted_text.h"

using ORVANE::MSTR;

namespace {

// Where a method's index message says which parameter it is about.
constexpr const char* kInParameter1 = "parameter 1 - ";

bool InitSchedule(CScriptCall& call) {
  for (int local = 1; local <= 3; ++local) {
    if (call.StringArgument(local) == nullptr) {
      return call.Fail("parameter %d not specified", local);
    }
  }
  call.Browser().InitSchedule(*call.StringArgument(1), *call.StringArgument(2),
                              *call.StringArgument(3));
  return true;
}

bool GetReady(CScriptCall& call) {
  return call.Push(!call.Browser().HasLoader() && call.Schedule() != nullptr ? 1 : 0);
}

bool GetStationCount(CScriptCall& call) {
  constexpr int kWaitMilliseconds = 10;
  while (call.Browser().HasLoader()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(kWaitMilliseconds));
    call.Browser().Think(kWaitMilliseconds);
  }
  return call.Push(call.StationCount());
}

bool GetStationId(CScriptCall& call) {
  const CStation* station = nullptr;
  if (!call.FetchStation(2, "", station)) return false;
  std::string id = station->GetLabel();
  for (char& c : id) {
    if (c == ' ' || c == '/' || c == '\\') c = '-';
  }
  return call.Push(id);
}

bool GetStationName(CScriptCall& call) {
  const CStation* station = nullptr;
  if (!call.FetchStation(2, "", station)) return false;
  const std::string label = station->GetLabel();
  return call.Push(label.substr(0, label.find('/')));
}

bool GetNowTime(CScriptCall& call) {
  std::int32_t granularity = 0;
  if (!call.FetchInt(1, 1, granularity)) return false;
  return call.Push(::GetNowTime(granularity));
}

// Both ends of the schedule's range; 0 where there is no broadcast.
std::pair<std::int32_t, std::int32_t> TimeRange(CScriptCall& call) {
  std::pair<std::int32_t, std::int32_t> range = {0, 0};
  if (call.Schedule() != nullptr) call.Schedule()->GetTimeRange(range.first, range.second);
  return range;
}

bool GetStartTime(CScriptCall& call) { return call.Push(TimeRange(call).first); }

bool GetEndTime(CScriptCall& call) { return call.Push(TimeRange(call).second); }

bool ConvertLocalTime2String(CScriptCall& call) {
  std::int32_t time = 0;
  std::int32_t format = 0;
  if (!call.FetchInt(1, 2, time) || !call.FetchInt(2, 3, format)) return false;
  return call.Push(::ConvertLocalTime2String(time, format));
}

bool GetFirstProgram4Time(CScriptCall& call) {
  const CStation* station = nullptr;
  std::int32_t from = 0;
  std::int32_t to = 0;
  if (!call.FetchStation(1, kInParameter1, station) || !call.FetchInt(2, 2, from) ||
      !call.FetchInt(3, 3, to)) {
    return false;
  }
  return call.Push(station->FindFirstIndex(from, to));
}

// The item that the first two arguments name; null when the station has none of that index.
bool FetchItem(CScriptCall& call, const CScheduleItem*& item) {
  const CStation* station = nullptr;
  std::int32_t index = 0;
  if (!call.FetchStation(1, kInParameter1, station) || !call.FetchInt(2, 2, index)) return false;
  item = station->GetProgram(index);
  return true;
}

bool GetProgramStartTime(CScriptCall& call) {
  const CScheduleItem* item = nullptr;
  if (!FetchItem(call, item)) return false;
  return call.Push(item != nullptr ? item->start : kTimeNeverSet);
}

bool GetProgramEndTime(CScriptCall& call) {
  const CScheduleItem* item = nullptr;
  if (!FetchItem(call, item)) return false;
  return call.Push(item != nullptr ? item->end : kTimeNeverSet);
}

bool GetProgramName(CScriptCall& call) {
  const CScheduleItem* item = nullptr;
  if (!FetchItem(call, item)) return false;
  return call.Push(item != nullptr ? std::string(item->GetTitle()) : std::string());
}

bool GetProgramCount(CScriptCall& call) {
  const CStation* station = nullptr;
  if (!call.FetchStation(1, kInParameter1, station)) return false;
  return call.Push(station->GetProgramCount());
}

bool GetProgramData(CScriptCall& call) {
  const CScheduleItem* item = nullptr;
  const MSTR* text = nullptr;
  if (!FetchItem(call, item) || !call.FetchString(3, text)) return false;
  return call.Push(item != nullptr ? ExpandTemplate(*item, ViewOf(*text), false) : std::string());
}

struct Method {
  const char* name;
  int locals;  // the instance and its arguments
  bool (*body)(CScriptCall& call);
};

constexpr Method kMethods[] = {
    {"InitSchedule", 4, InitSchedule},
    {"GetReady", 1, GetReady},
    {"GetStationCount", 1, GetStationCount},
    {"GetStationId", 2, GetStationId},
    {"GetStationName", 2, GetStationName},
    {"GetNowTime", 2, GetNowTime},
    {"GetStartTime", 1, GetStartTime},
    {"GetEndTime", 1, GetEndTime},
    {"ConvertLocalTime2String", 3, ConvertLocalTime2String},
    {"GetFirstProgram4Time", 4, GetFirstProgram4Time},
    {"GetProgramStartTime", 3, GetProgramStartTime},
    {"GetProgramEndTime", 3, GetProgramEndTime},
    {"GetProgramName", 3, GetProgramName},
    {"GetProgramCount", 2, GetProgramCount},
    {"GetProgramData", 4, GetProgramData},
};

// Every method's frame. No exception leaves it: the engine calls through a plain function.
template <std::size_t kRow>
bool Enter(ORVANE::MSSEXEC* exec) {
  const Method& method = kMethods[kRow];
  CScriptCall call(*exec, method.name);
  try {
    return call.Resolve() && method.body(call);
  } catch (const std::bad_alloc&) {
    return call.Fail("%s", CBadAlloc().what());
  } catch (const std::exception& error) {
    return call.Fail("%s", error.what());
  }
}

template <std::size_t... kRows>
void AddRows(ORVANE::MSSMODULE& module, std::index_sequence<kRows...> /*rows*/) {
  (module.AddMethod(kMethods[kRows].name, kMethods[kRows].locals, kMethods[kRows].locals,
                    kMethods[kRows].locals + 2, Enter<kRows>),
   ...);
}

}  // namespace

void AddScriptMethods(ORVANE::MSSMODULE& module) {
  AddRows(module, std::make_index_sequence<std::size(kMethods)>());
}
