// The methods of the script class EPGBROWSER.
#pragma once

#include "host/script.h"

// Adds the fifteen methods to a module that is being built.
void AddScriptMethods(ORVANE::MSSMODULE& module);
