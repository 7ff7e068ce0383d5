// The library-wide state of the plug-in. Everything that must exist from load to unload is defined
// in one source file, in the order in which it is set up.
#pragma once

#include "host/mrefobj.h"
#include "plugin/instance_pool.h"

extern CInstancePool instance_pool;

// Refers to the plug-in's one module between Initialise and Release.
extern ORVANE::MREFOBJREF module_holder;
