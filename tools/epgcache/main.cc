// epgcache: listings for the guide plug-in out of any XMLTV guides.

#include <cstdio>
#include <exception>

#include "tools/epgcache/check/check.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/make_listings.h"
#include "tools/epgcache/options.h"
#include "tools/epgcache/read/elements.h"
#include "tools/epgcache/write/output_file.h"

namespace {

// A line for each element that has a field: its place, its name, the field.
int ShowElements() {
  for (const epgcache::Element& element : epgcache::kElements) {
    std::printf("%.*s/%.*s\t%.*s\n", static_cast<int>(element.parent.size()), element.parent.data(),
                static_cast<int>(element.name.size()), element.name.data(),
                static_cast<int>(element.becomes.size()), element.becomes.data());
  }
  if (std::fflush(stdout) != 0) throw epgcache::Failure("the answer cannot be written");
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    epgcache::HandleSignals();
    const epgcache::CommandLine line = epgcache::ReadCommandLine(count, arguments);
    if (!line.options) return line.status;
    if (line.options->elements) return ShowElements();
    if (line.options->check) return epgcache::CheckFile(*line.options);
    return epgcache::MakeListings(*line.options);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "epgcache: %s\n", failure.what());
  }
  return 1;
}
