// Where a schedule's data came from. The numbers stand in listings files.
#pragma once

#include <cstdint>

enum class ProviderKind : std::int32_t {
  kOther = 0,
  kTitanTV = 1,
  kRadioTimes = 2,
  kXMLTV = 3,
};
