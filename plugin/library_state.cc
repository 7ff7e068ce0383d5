#include "plugin/library_state.h"

#include <new>

#include "browser/epg_browser.h"
#include "plugin/epg_browser_mss.h"
#include "schedule/fields.h"

namespace {

// Null when there is no memory: the engine that calls a factory knows no exceptions of ours.
template <typename Object>
ORVANE::MOBJ* Make() {
  try {
    return new Object;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

// Initialised from top to bottom when the library is loaded, destroyed in reverse order.

CInstancePool instance_pool;

ORVANE::MREFOBJREF module_holder;

const ORVANE::MOBJ::SREC CEPGBrowser::_Record("CEPGBrowser", Make<CEPGBrowser>);

const ORVANE::MOBJ::SREC CEPGBrowser::MSS::_Record("CEPGBrowser::MSS",
                                                   []() -> ORVANE::MOBJ* { return Take(); });

const ORVANE::MOBJ::SREC CEPGBrowser::CREATEPARAMS::_Record("CEPGBrowser::CREATEPARAMS",
                                                            Make<CREATEPARAMS>);

FieldTable field_table;

StationFieldTable station_field_table;
