#include "app/guide_options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

#include "app/local_time.h"

namespace shell {

namespace {

constexpr std::int32_t kMostHours = 24 * 14;

// The parts of a list with commas, without the blanks around them.
std::vector<std::string> Split(std::string_view list) {
  std::vector<std::string> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    std::string_view part = list.substr(0, end);
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    part = part.substr(0, part.find_last_not_of(' ') + 1);
    if (!part.empty()) parts.emplace_back(part);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

}  // namespace

std::optional<std::int32_t> ReadWholeNumber(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = !text.empty() && end == text.data() + text.size() && error == std::errc();
  return whole ? std::optional(value) : std::nullopt;
}

std::optional<GuideOptions> ReadGuideOptions(const std::vector<std::string>& arguments,
                                             std::string& error) {
  GuideOptions options;
  std::string hours;
  std::string stations;
  const struct {
    std::string_view name;
    std::string& value;
  } known[] = {{"--at", options.at},
               {"--hours", hours},
               {"--stations", stations},
               {"--details", options.details},
               {"--template", options.program_template}};
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    if (argument.size() < 2 || argument[0] != '-') {
      if (!options.listings.empty()) {
        error = "guide takes one listings file, not also " + argument;
        return std::nullopt;
      }
      options.listings = argument;
      continue;
    }
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const auto* const option = std::find_if(std::begin(known), std::end(known),
                                            [&](const auto& one) { return one.name == name; });
    if (option == std::end(known)) {
      error = "guide has no option " + name;
      return std::nullopt;
    }
    option->value.clear();
    if (equals != std::string::npos) {
      option->value = argument.substr(equals + 1);
    } else if (at + 1 < arguments.size()) {
      option->value = arguments[++at];
    }
    if (option->value.empty()) {
      error = name + " needs a value";
      return std::nullopt;
    }
  }
  if (options.listings.empty()) {
    error = "guide needs a listings file";
    return std::nullopt;
  }
  if (!hours.empty()) {
    options.hours = ReadWholeNumber(hours);
    if (!options.hours || *options.hours < 1 || *options.hours > kMostHours) {
      error = "--hours takes a number from 1 to " + std::to_string(kMostHours) + ", not " + hours;
      return std::nullopt;
    }
  }
  if (!options.at.empty() && !ReadMoment(options.at, 0)) {
    error = "--at " + options.at +
            " is no time; write it as 20:15, \"tomorrow 20:15\", \"2026-11-23 20:15\" or \"23 Nov "
            "8pm\"";
    return std::nullopt;
  }
  options.stations = Split(stations);
  if (options.stations.empty() && !stations.empty()) {
    error = "--stations needs a value";
    return std::nullopt;
  }
  if (options.details.empty() && !options.program_template.empty()) {
    error = "--template goes with --details";
    return std::nullopt;
  }
  return options;
}

}  // namespace shell
