// Listings to measure with: a seeded guide of which every fourth broadcast repeats a programme,
// written in each of the formats.
#pragma once

#include <cstdint>
#include <ostream>

namespace bench {

enum class Format { kXMLTV, kCache, kTitanTV, kRadioTimes };
inline constexpr Format kFormats[] = {Format::kXMLTV, Format::kCache, Format::kTitanTV,
                                      Format::kRadioTimes};
const char* NameOf(Format format);

// 48 stations and 14 days are some 28,000 broadcasts, 16 MB of XMLTV.
struct GuideSize {
  std::uint32_t stations = 48;
  std::int32_t days = 14;
  std::uint32_t seed = 1;
};

// The same bytes for the same size and format. Returns how many broadcasts there are.
std::int64_t WriteListings(std::ostream& out, Format format, const GuideSize& size);

}  // namespace bench
