#include "plugin/entry_points.h"

#include <memory>
#include <new>

#include "host/mlog.h"
#include "plugin/epg_browser_mss.h"
#include "plugin/library_state.h"
#include "schedule/fields.h"

using ORVANE::MLOG;
using ORVANE::MLog;

namespace {

ORVANE::MREFOBJ* MakeModule() {
  try {
    return new CEPGBrowser::MSS::MODULE;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

void Initialise() {
  MLog.Log(MLOG::NOTICE, "EPGBROWSER DLL Starting");
  if (module_holder.Get() == nullptr) module_holder = MakeModule();
  try {
    FillFieldTable();
    FillStationFieldTable();
  } catch (const std::bad_alloc&) {
    MLog.Log(MLOG::ERROR, "EPGBROWSER has no memory for its field names");
  }
}

void Release() {
  MLog.Log(MLOG::NOTICE, "EPGBROWSER plug-in Releasing");
  const std::unique_ptr<ORVANE::MREFOBJ> module(module_holder.Get());
  module_holder = nullptr;
  instance_pool.FreeBlocks();
  if (module != nullptr && module->RefCount() > 0) {
    MLog.Log(MLOG::ERROR, "EPGBROWSER reference count > 0 ...");
  }
}
