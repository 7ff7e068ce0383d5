// The guide that the benchmarks measure with, as files.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/listings_writer.h"
#include "schedule/provider_data.h"

namespace bench {

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
