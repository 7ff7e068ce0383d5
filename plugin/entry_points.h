// The two functions that the plug-in exports.
//
// Threads: [engine], when no script runs.
#pragma once

#include "host/api.h"

extern "C" {

// Called once after loading: makes the script class EPGBROWSER known.
ORVANE_EXPORT void Initialise();

// Called once before unloading. Every instance and the module are destroyed, whoever still refers
// to them.
ORVANE_EXPORT void Release();
}
