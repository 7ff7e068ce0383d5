// What the plug-in reads of an XMLTV guide beside what the guide says.
#pragma once

#include <string>

#include "schedule/provider_data.h"
#include "tools/epgcache/options.h"

namespace epgcache {

struct Differences {
  std::string fault;  // a line that says where the guide is not well-formed; empty when it is
  std::string lines;  // one for each kind, with its count and cause
};

// Compares the schedule `read`, which the plug-in's importer made of the guide in the file `path`,
// with the one that the same guide gives when it is read as XML. `name` is how the guide is called
// in messages. Throws Failure.
Differences FindDifferences(const CProviderData& read, const std::string& name,
                            const std::string& path, const Options& options);

}  // namespace epgcache
