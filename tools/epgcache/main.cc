// epgcache: listings for the guide plug-in out of any XMLTV guides.

#include <cstdio>
#include <exception>
#include <string>

#include "tools/epgcache/answer.h"
#include "tools/epgcache/check/check.h"
#include "tools/epgcache/make_listings.h"
#include "tools/epgcache/options.h"
#include "tools/epgcache/read/elements.h"
#include "tools/epgcache/write/output_file.h"

namespace {

// A line for each element that has a field: its place, its name, the field.
int ShowElements() {
  std::string table;
  for (const epgcache::Element& element : epgcache::kElements) {
    table.append(element.parent).append("/").append(element.name).append("\t");
    table.append(element.becomes).append("\n");
  }
  epgcache::WriteAnswer(table);
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
