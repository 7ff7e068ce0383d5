// Broadcasts whose texts hold the words of a search.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/guide_view.h"
#include "app/options.h"
#include "app/text_search.h"

namespace shell {

// In the order in which what is found in them is shown.
enum class Field { kTitle, kEpisode, kPeople, kDescription };
std::string_view NameOf(Field field);

struct Hit {
  std::int32_t station;
  GuideView::Broadcast broadcast;
  Field field;  // the last that was needed to find every word
};

// A broadcast's text; people are its actors and its director.
std::string TextOf(Guide& guide, std::int32_t station, std::int32_t index, Field field);

// Those of the options' fields, stations and days, titles first, then by time. Nothing when the
// options ask for something that does not exist, which has been reported.
std::optional<std::vector<Hit>> FindHits(const GuideView& view, const Options& options,
                                         const TextSearch& search);

}  // namespace shell
