// epgcache: listings for the guide plug-in out of any XMLTV guides.

#include <cstdio>
#include <exception>
#include <new>

#include "tools/epgcache/check.h"
#include "tools/epgcache/make_listings.h"
#include "tools/epgcache/options.h"
#include "tools/epgcache/output_file.h"

int main(int count, char** arguments) {
  try {
    epgcache::HandleSignals();
    const epgcache::CommandLine line = epgcache::ReadCommandLine(count, arguments);
    if (!line.options) return line.status;
    if (line.options->check) return epgcache::CheckFile(*line.options);
    return epgcache::MakeListings(*line.options);
  } catch (const std::bad_alloc&) {
    std::fputs("epgcache: out of memory\n", stderr);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "epgcache: %s\n", failure.what());
  }
  return 1;
}
