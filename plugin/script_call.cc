#include "plugin/script_call.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

#include "host/mlog.h"
#include "plugin/epg_browser_mss.h"
#include "text/counted_text.h"

using ORVANE::MLOG;
using ORVANE::MLog;
using ORVANE::MSTR;

bool CScriptCall::Resolve() {
  const auto* const instance = dynamic_cast<const CEPGBrowser::MSS*>(exec_.GetLocal(0));
  if (instance == nullptr) return Fail("cannot convert 'this' to CEPGBrowser object");
  ORVANE::MMONOBJ* const entity = instance->entity.Get();
  if (entity == nullptr) return Fail("'this' is a NULL");
  browser_ = pin_.Find(entity);
  return browser_ != nullptr || Fail("'this' does not reference a CEPGBrowser");
}

const CProviderData* CScriptCall::Schedule() {
  if (schedule_ == nullptr) schedule_ = browser_->Schedule();
  return schedule_.get();
}

std::int32_t CScriptCall::StationCount() {
  return Schedule() != nullptr ? Schedule()->GetStationCount() : 0;
}

bool CScriptCall::FetchInt(int local, int reported, std::int32_t& value) {
  return exec_.GetLocalInt(local, value) ||
         Fail("Parameter %d not an integer or missing", reported);
}

const MSTR* CScriptCall::StringArgument(int local) const {
  const MSTR* text = nullptr;
  return exec_.GetLocalString(local, text) ? text : nullptr;
}

bool CScriptCall::FetchString(int local, const MSTR*& text) {
  text = StringArgument(local);
  return text != nullptr || Fail("Parameter %d not a string or missing", local);
}

bool CScriptCall::FetchStation(int reported, const char* place, const CStation*& station) {
  std::int32_t index = 0;
  if (!FetchInt(1, reported, index)) return false;
  const std::int32_t count = StationCount();
  if (index < 0 || index >= count) {
    return Fail("%sinvalid index value (%d) max is: %d", place, index, count - 1);
  }
  station = Schedule()->GetStation(index);
  return true;
}

bool CScriptCall::Push(std::int32_t value) {
  auto* const result = ORVANE::MSSINTEGER::Allocate();
  result->value = value;
  exec_.Push(result);
  return true;
}

bool CScriptCall::Push(const std::string& value) {
  struct GiveBack {
    void operator()(ORVANE::MSSSTRING* unused) const { unused->Release(); }
  };
  std::unique_ptr<ORVANE::MSSSTRING, GiveBack> result(ORVANE::MSSSTRING::Allocate());
  AssignTo(result->value, value);
  exec_.Push(result.release());
  return true;
}

bool CScriptCall::Fail(const char* format, ...) {
  // On the stack: a call may fail because there is no memory.
  char text[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  MLog.Log(MLOG::ERROR, "%s() : %s", method_, text);
  exec_.LogCallers();
  return false;
}
