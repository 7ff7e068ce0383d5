// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/epgcache/merge/guide.h"
#include "tools/epgcache/read/guide_reader.h"
#include "tools/epgcache/write/target_text.h"

namespace epgcache {

struct Options {
  std::vector<std::string> inputs;
  std::string output;
  bool check = false;
  bool list = false;
  bool elements = false;
  bool keep_going = false;
  bool quiet = false;
  std::uint64_t max_size = std::uint64_t{4} << 30;  // bytes
  Encoding encoding = Encoding::kUtf8;
  ReadingOptions reading;
  GuideOptions guide;
};

// What was asked for; or the exit status, when that was help, the version, or nothing that can be
// done, and has been shown.
struct CommandLine {
  std::optional<Options> options;
  int status = 0;
};

CommandLine ReadCommandLine(int count, char** arguments);

}  // namespace epgcache
