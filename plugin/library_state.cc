#include "plugin/library_state.h"

#include "browser/epg_browser.h"
#include "plugin/epg_browser_mss.h"
#include "schedule/program_details.h"

// Set up from top to bottom when the library is loaded, taken down in the reverse order.

CInstancePool instance_pool;

ORVANE::MREFOBJREF module_holder;

const ORVANE::MOBJ::SREC CEPGBrowser::_Record("CEPGBrowser",
                                              []() -> ORVANE::MOBJ* { return new CEPGBrowser; });

const ORVANE::MOBJ::SREC CEPGBrowser::MSS::_Record("CEPGBrowser::MSS",
                                                   []() -> ORVANE::MOBJ* { return Take(); });

const ORVANE::MOBJ::SREC CEPGBrowser::CREATEPARAMS::_Record("CEPGBrowser::CREATEPARAMS",
                                                            []() -> ORVANE::MOBJ* {
                                                              return new CREATEPARAMS;
                                                            });

FieldTable field_table;

StationFieldTable station_field_table;
