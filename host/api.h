// What every declaration of the engine library shares: export marks and compiler attributes.
#pragma once

// What a library gives to others.
#if defined(_WIN32)
#define ORVANE_EXPORT __declspec(dllexport)
#else
#define ORVANE_EXPORT __attribute__((visibility("default")))
#endif

// What the engine gives to its guests and hosts.
#if defined(_WIN32) && !defined(ORVANE_BUILD)
#define ORVANE_API __declspec(dllimport)
#else
#define ORVANE_API ORVANE_EXPORT
#endif

#if defined(__GNUC__)
// The parameter `format_index` is a printf format, its arguments begin at `first_argument`
// (counted from 1, `this` included).
#define ORVANE_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define ORVANE_PRINTF(format_index, first_argument)
#endif
