// What stands behind `epgshell guide`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace shell {

struct GuideOptions {
  std::string listings;  // with or without its ".xml"
  std::string at;        // empty: now, or the schedule's start when now lies outside it
  std::optional<std::int32_t> hours;
  std::vector<std::string> stations;  // all when there is none
  std::string details;                // a station, or empty for the grid
  std::string program_template;       // of the details; empty for the usual one
};

// Reads what stands behind `guide`. Nothing when it is not understood; `error` then says why.
std::optional<GuideOptions> ReadGuideOptions(const std::vector<std::string>& arguments,
                                             std::string& error);

// The decimal number that a text is, from -2^31 to 2^31 - 1.
std::optional<std::int32_t> ReadWholeNumber(std::string_view text);

}  // namespace shell
