// What every declaration of the engine library shares: export marks and compiler attributes.
#pragma once

#if defined(_WIN32)
#if defined(ORVANE_BUILD)
#define ORVANE_API __declspec(dllexport)
#else
#define ORVANE_API __declspec(dllimport)
#endif
#else
#define ORVANE_API __attribute__((visibility("default")))
#endif

#if defined(__GNUC__)
// The parameter `format_index` is a printf format, its arguments begin at `first_argument`
// (counted from 1, `this` included).
#define ORVANE_PRINTF(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define ORVANE_PRINTF(format_index, first_argument)
#endif
