// The program as a function, for those that start it.
#pragma once

#include "host/api.h"

extern "C" {

// The exit status. Once a process.
ORVANE_EXPORT int RunEpgshell(int argc, char** argv);
}
