// Writes listings to measure with: `epg_write_listings FORMAT STATIONS DAYS SEED FILE`.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/listings_writer.h"

int main(int argc, char** argv) {
  if (argc == 6) {
    const bench::GuideSize size = {static_cast<std::uint32_t>(std::atoi(argv[2])),
                                   std::atoi(argv[3]),
                                   static_cast<std::uint32_t>(std::atoi(argv[4]))};
    for (const bench::Format format : bench::kFormats) {
      if (argv[1] != std::string(bench::NameOf(format))) continue;
      std::ofstream out(argv[5], std::ios::binary);
      std::printf("%lld broadcasts\n",
                  static_cast<long long>(bench::WriteListings(out, format, size)));
      return out.flush() ? 0 : 1;
    }
  }
  std::fprintf(stderr, "usage: %s xmltv|cache|titantv|radiotimes STATIONS DAYS SEED FILE\n",
               argv[0]);
  return 2;
}
