// One call of an EPGBROWSER method: the browser behind it, its checked arguments, its result, and
// the one way in which it fails.
//
// Threads: a call belongs to the thread that its script runs on.
// Errors: an operation that answers false has logged the method's failure; the method then answers
//   false at once.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "browser/browser_pin.h"
#include "browser/epg_browser.h"
#include "host/api.h"
#include "host/mstr.h"
#include "host/script.h"
#include "schedule/provider_data.h"

class CScriptCall {
 public:
  CScriptCall(ORVANE::MSSEXEC& exec, const char* method) : exec_(exec), method_(method) {}

  // Finds the browser of the instance called. Everything below needs it.
  [[nodiscard]] bool Resolve();
  CEPGBrowser& Browser() const { return *browser_; }

  // The schedule, as it was when it was first asked for in this call; null when there is none.
  const CProviderData* Schedule();

  // A browser without a schedule counts as one without stations.
  std::int32_t StationCount();

  // Null when the argument is missing or no string. Lives for the call.
  const ORVANE::MSTR* StringArgument(int local) const;

  // Arguments. `reported` is the parameter's number in the failure's text.
  [[nodiscard]] bool FetchInt(int local, int reported, std::int32_t& value);
  [[nodiscard]] bool FetchString(int local, const ORVANE::MSTR*& text);
  // The station whose index is the first argument. `place` begins the text for a wrong index.
  [[nodiscard]] bool FetchStation(int reported, const char* place, const CStation*& station);

  // Hand over the result; true.
  bool Push(std::int32_t value);
  bool Push(const std::string& value);

  // Logs the method's name with the text, and the script call stack; false.
  bool Fail(const char* format, ...) ORVANE_PRINTF(2, 3);

 private:
  ORVANE::MSSEXEC& exec_;
  const char* const method_;
  CBrowserPin pin_;
  CEPGBrowser* browser_ = nullptr;
  std::shared_ptr<const CProviderData> schedule_;
};
