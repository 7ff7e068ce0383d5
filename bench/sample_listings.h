// Listings to measure with: a seeded guide of 48 stations and 14 days, some 28,000 broadcasts of
// which every fourth repeats a programme, written in each of the formats.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "schedule/provider_data.h"

namespace bench {

enum class Format { kXMLTV, kCache, kTitanTV, kRadioTimes };
inline constexpr Format kFormats[] = {Format::kXMLTV, Format::kCache, Format::kTitanTV,
                                      Format::kRadioTimes};
const char* NameOf(Format format);

// A file of the guide in that format. It is written when it is first asked for, and removed at the
// program's end.
const std::string& FileOf(Format format);
std::int64_t BytesOf(const std::string& path);
// How many broadcasts the guide has.
std::int64_t ItemCount();

// Has everything that needs a finished schedule use this file instead, in any format.
void UseListings(std::string path);
// The XMLTV file, or the one to be used instead.
const std::string& ListingsFile();
const CProviderData& Schedule();

// Random stations and times within the schedule, the same in every run.
struct Query {
  std::int32_t station;
  std::int32_t at;
};
std::vector<Query> RandomQueries();

std::shared_ptr<CProviderData> Import(const std::string& path);

}  // namespace bench
