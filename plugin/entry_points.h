// The two functions that the plug-in exports.
//
// Threads: [engine], when no script runs.
#pragma once

#if defined(_WIN32)
#define EPG_EXPORT __declspec(dllexport)
#else
#define EPG_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

// Called once behind loading: makes the script class EPGBROWSER known.
EPG_EXPORT void Initialise();

// Called once before unloading. Every instance and the module are destroyed, whoever still refers
// to them.
EPG_EXPORT void Release();
}
